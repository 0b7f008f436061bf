// The small XML streams of SolidWorks files: elements with attributes and texts, and nothing else of XML.
//
//     for (const XmlElement& element : ReadXml(stream)) {
//         if (element.name == "swReference") { ... element.Of("swName") ... }
//     }
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cadex::solidworks {

struct XmlElement
{
    std::string name;
    int depth = 0; ///< 0: the outermost one
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text; ///< directly in it, blanks around it left out

    /// Value of an attribute; empty when there is none.
    std::string_view Of(std::string_view attribute) const;
};

/// All elements in the order in which they begin, texts in UTF-8. UTF-16 with a byte order mark is taken,
/// too; bytes in front of the first "<" are passed over. Where it is not well-formed the reading ends.
std::vector<XmlElement> ReadXml(std::string_view bytes);

} // namespace cadex::solidworks
