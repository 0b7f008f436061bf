// Integer names of the SDK, and the tag that makes a handle refer to a new, empty object.
#pragma once

#include <cadex/Base_Export.hxx>

#include <cstdint>

namespace cadex {

typedef unsigned char U8;
typedef unsigned short U16;
typedef unsigned int U32;
typedef std::uint64_t U64;
typedef char I8;
typedef short I16;
typedef int I32;
typedef std::int64_t I64;
typedef U8 UTF8;
typedef U16 UTF16;
typedef U32 UTF32;

/// `ModelData_Part part{initialized()};` makes a new empty part; `ModelData_Part part;` makes a null handle.
struct CADEX_EXPORT initialized
{
};

} // namespace cadex
