#pragma once

#include "apps/export/GlbLayout.h"

class OutputFile;

/// Places as whole numbers in a box: 16 bits a coordinate along the box' longest side.
namespace GlbBox {

/// The longest side of the shape's box; one for a box without sides.
float Extent(const ShapeView& shape);
std::uint16_t SixteenBits(double value, double low, double extent);

} // namespace GlbBox

/// An array as EXT_meshopt_compression has it; empty in a build without the compressor.
std::vector<unsigned char> PackedGlbArray(const GlbLayout& layout, const GlbAccessor& accessor);

/// Writes the binary chunk's content: `layout.BinarySize()` bytes.
void WriteGlbBinary(const GlbLayout& layout, OutputFile& file);
