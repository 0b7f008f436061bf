#include "sdk/solidworks/SldDisplayList.h"

#include <algorithm>
#include <cmath>

#include "sdk/solidworks/SldBytes.h"

namespace cadex::solidworks {

namespace {

constexpr double MillimetresPerMetre = 1000;

/// An array: size of an item, kind of item, 2, count, items.
constexpr std::size_t ArrayHeader = 16;
constexpr std::string_view StripsArray("\x04\0\0\0\x08\0\0\0\x02\0\0\0", 12);
constexpr std::string_view PointsArray("\x0c\0\0\0\x64\0\0\0\x02\0\0\0", 12);
constexpr std::size_t PointSize = 12;

/// Begins a text: the mark, a count of one byte (or 255 and two), units of two bytes.
constexpr std::string_view TextMark("\xff\xfe\xff", 3);
constexpr std::size_t LookNumbers = 6;
/// Between the placement of a component and the names of its configuration and its model.
constexpr std::size_t MostBeforeName = 400;

struct Text
{
    Base_UTF16String value;
    std::size_t end;
};

std::optional<Text> TextAt(std::string_view bytes, std::size_t at)
{
    if (bytes.substr(std::min(at, bytes.size()), TextMark.size()) != TextMark) {
        return std::nullopt;
    }
    std::size_t units = ValueAt<std::uint8_t>(bytes, at + 3);
    std::size_t begin = at + 4;
    if (units == 255) {
        units = ValueAt<std::uint16_t>(bytes, at + 4);
        begin = at + 6;
    }
    if (!Has(bytes, begin, units * 2)) {
        return std::nullopt;
    }
    return Text{Utf16At(bytes, begin, units), begin + units * 2};
}

/// The items of an array that begins at the place, which is moved behind it.
std::optional<std::string_view> ArrayAt(std::string_view bytes, std::size_t& at, std::string_view head,
                                        std::size_t itemSize)
{
    if (!Has(bytes, at, ArrayHeader) || bytes.substr(at, head.size()) != head) {
        return std::nullopt;
    }
    const std::size_t size = std::size_t{ValueAt<std::uint32_t>(bytes, at + 12)} * itemSize;
    if (!Has(bytes, at + ArrayHeader, size)) {
        return std::nullopt;
    }
    const std::string_view items = bytes.substr(at + ArrayHeader, size);
    at += ArrayHeader + size;
    return items;
}

/// Whether the strips together have so many points.
bool Fits(std::string_view strips, std::size_t points)
{
    std::size_t sum = 0;
    for (std::size_t at = 0; at < strips.size(); at += 4) {
        const std::size_t length = ValueAt<std::uint32_t>(strips, at);
        if (length > points) {
            return false;
        }
        sum += length;
    }
    return sum == points;
}

/// The arrays of a face, if they begin there: strips, points, normals.
std::optional<DisplayFace> FaceAt(std::string_view bytes, std::size_t& at)
{
    std::size_t end = at;
    const auto strips = ArrayAt(bytes, end, StripsArray, 4);
    const auto points = strips ? ArrayAt(bytes, end, PointsArray, PointSize) : std::nullopt;
    const auto normals = points ? ArrayAt(bytes, end, PointsArray, PointSize) : std::nullopt;
    if (!normals || points->empty() || (!normals->empty() && normals->size() != points->size()) ||
        !Fits(*strips, points->size() / PointSize)) {
        return std::nullopt;
    }
    at = end;
    return DisplayFace{*strips, *points, *normals, {}};
}

/// A look, if a text of it begins there: colour, two numbers, texture, material, then what light makes of it
/// (ambient, diffuse, specular, shininess, transparency, emission).
std::optional<DisplayLook> LookAt(std::string_view bytes, std::size_t at)
{
    constexpr std::size_t BeforeText = 12;
    constexpr std::uint32_t ColourBits = 0x00FFFFFF;
    if (at < BeforeText) {
        return std::nullopt;
    }
    const auto colour = ValueAt<std::uint32_t>(bytes, at - BeforeText);
    const auto flags = ValueAt<std::uint32_t>(bytes, at - 8);
    const auto second = ValueAt<std::uint32_t>(bytes, at - 4);
    const std::optional<Text> texture = TextAt(bytes, at);
    const std::optional<Text> material = texture ? TextAt(bytes, texture->end) : std::nullopt;
    if (colour > ColourBits || flags > ColourBits || second > ColourBits || !material ||
        !Has(bytes, material->end, LookNumbers * sizeof(double))) {
        return std::nullopt;
    }
    constexpr double Least = 1e-6; // what is not zero and below is no number of a look
    double numbers[LookNumbers];
    for (std::size_t i = 0; i < LookNumbers; ++i) {
        numbers[i] = ValueAt<double>(bytes, material->end + i * sizeof(double));
        if (!(numbers[i] == 0 || (numbers[i] > Least && numbers[i] <= 1))) {
            return std::nullopt;
        }
    }
    if (numbers[0] + numbers[1] == 0) {
        return std::nullopt; // some zeros behind two texts
    }
    const auto part = [&](int shift) { return static_cast<float>(colour >> shift & 255) / 255.F; };
    return DisplayLook{{part(0), part(8), part(16), static_cast<float>(1 - numbers[4])}, material->value};
}

bool IsRotation(const std::array<double, 9>& m)
{
    constexpr double Tolerance = 1e-6;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            const double product =
                m[3 * i] * m[3 * k] + m[3 * i + 1] * m[3 * k + 1] + m[3 * i + 2] * m[3 * k + 2];
            if (!(std::abs(product - (i == k ? 1 : 0)) < Tolerance)) {
                return false;
            }
        }
    }
    return true;
}

/// Behind the name of a component: whether it is turned, then nine numbers; three of its place, a factor.
std::optional<Matrix> PlacementAt(std::string_view bytes, std::size_t at)
{
    const auto isTurned = ValueAt<std::uint8_t>(bytes, at);
    std::array<double, 9> rotation{1, 0, 0, 0, 1, 0, 0, 0, 1};
    std::size_t next = at + 1;
    if (isTurned == 1) {
        for (double& value : rotation) {
            value = ValueAt<double>(bytes, next);
            next += sizeof(double);
        }
    }
    if (isTurned > 1 || !Has(bytes, next, 4 * sizeof(double)) || !IsRotation(rotation)) {
        return std::nullopt;
    }
    const auto scale = ValueAt<double>(bytes, next + 3 * sizeof(double));
    Matrix result;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[4 * row + column] = rotation[3 * column + row] * scale;
        }
        result[4 * row + 3] = ValueAt<double>(bytes, next + row * sizeof(double)) * MillimetresPerMetre;
    }
    const bool isSound = scale > 0 && std::all_of(result.begin(), result.end(),
                                                  [](double value) { return std::abs(value) < 1e9; });
    return isSound ? std::optional<Matrix>(result) : std::nullopt;
}

/// The component whose name begins there.
std::optional<DisplayComponent> ComponentAt(std::string_view bytes, std::size_t at)
{
    const std::optional<Text> name = TextAt(bytes, at);
    if (!name) {
        return std::nullopt;
    }
    DisplayComponent component;
    component.name = name->value.ToUTF8();
    const std::optional<Matrix> placement = PlacementAt(bytes, name->end);
    if (component.name.find('@') == std::string::npos || !placement) {
        return std::nullopt;
    }
    component.placement = *placement;
    const auto nextText = [&](std::size_t from) -> std::optional<Text> {
        const std::size_t begin = bytes.substr(0, from + MostBeforeName).find(TextMark, from);
        return begin == std::string_view::npos ? std::nullopt : TextAt(bytes, begin);
    };
    const std::optional<Text> configuration = nextText(name->end);
    const std::optional<Text> model = configuration ? nextText(configuration->end) : std::nullopt;
    if (!model) {
        return std::nullopt;
    }
    component.configuration = configuration->value.ToUTF8();
    component.model = model->value.ToUTF8();
    return component;
}

/// A body's name ends so many bytes in front of its look: between them stand a number or two, all bits set,
/// and what kind of object the look is.
constexpr std::size_t NameToLook[] = {10, 14};

class Scanner
{
public:
    Scanner(std::string_view bytes, std::vector<DisplayComponent>& components,
            std::optional<DisplayLook>& look)
        : myBytes(bytes), myComponents(components), myDocumentLook(look)
    {
    }

    void Run()
    {
        std::size_t behind = 0; // the last face
        for (std::size_t at = myBytes.find(StripsArray); at != std::string_view::npos;
             at = myBytes.find(StripsArray, at)) {
            const std::size_t begin = at;
            if (const std::optional<DisplayFace> face = FaceAt(myBytes, at)) {
                ReadBetween(behind, begin);
                AddFace(*face, begin);
                behind = at;
            } else {
                at += 4;
            }
        }
        ReadBetween(behind, myBytes.size());
        FinishComponent();
    }

private:
    /// What stands between two faces: the looks of the first one and, where a part ends, of its bodies, and
    /// the components up to the one that the second face belongs to.
    void ReadBetween(std::size_t from, std::size_t to)
    {
        const std::string_view bytes = myBytes.substr(0, to);
        std::size_t previousEnd = 0; // of the text before
        Base_UTF16String previous;
        for (std::size_t at = bytes.find(TextMark, from); at != std::string_view::npos;
             at = bytes.find(TextMark, at)) {
            if (std::optional<DisplayLook> look = LookAt(bytes, at)) {
                const std::size_t begin = at - 12;
                const bool isNamed =
                    std::any_of(std::begin(NameToLook), std::end(NameToLook),
                                [&](std::size_t size) { return previousEnd + size == begin; });
                AddLook(std::move(*look), isNamed ? previous : Base_UTF16String());
            } else if (std::optional<DisplayComponent> component = ComponentAt(bytes, at)) {
                FinishComponent();
                myComponents.push_back(std::move(*component));
            }
            const std::optional<Text> text = TextAt(bytes, at);
            if (text) {
                previous = text->value;
                previousEnd = text->end;
            }
            at += TextMark.size();
        }
    }

    void AddLook(DisplayLook look, const Base_UTF16String& name)
    {
        if (myComponents.empty()) {
            if (!myDocumentLook) {
                myDocumentLook = std::move(look);
            }
        } else if (myLeft > 0) {
            DisplayBody& body = myComponents.back().bodies.back();
            body.faces.back().look = std::move(look);
        } else {
            myLooks.emplace_back(std::move(look), name);
        }
    }

    /// In front of the first face of a body stands how many it has; in front of every face, the kind of
    /// object, its triangles and its strips.
    void AddFace(const DisplayFace& face, std::size_t begin)
    {
        if (myComponents.empty()) {
            myComponents.emplace_back();
        }
        std::vector<DisplayBody>& bodies = myComponents.back().bodies;
        if (bodies.empty() || myLeft == 0) {
            const std::size_t count = CountBefore(begin);
            if (bodies.empty() || count > 0) {
                bodies.emplace_back();
            }
            myLeft = std::max<std::size_t>(count, 1);
        }
        bodies.back().faces.push_back(face);
        --myLeft;
    }

    std::size_t CountBefore(std::size_t face) const
    {
        constexpr std::size_t Sizes = 8; ///< triangles, strips
        constexpr std::string_view FirstOfKind("\xff\xff\x01\x00\x14\x00uoTempFaceTessData_c", 26);
        if (face < Sizes + FirstOfKind.size() + 2) {
            return 0;
        }
        const std::size_t kind = face - Sizes;
        const bool isFirst = myBytes.substr(kind - FirstOfKind.size(), FirstOfKind.size()) == FirstOfKind;
        const std::size_t count = kind - (isFirst ? FirstOfKind.size() : 2) - 2;
        return ValueAt<std::uint16_t>(myBytes, count);
    }

    /// The looks behind the last face are those of the bodies, in their order.
    void FinishComponent()
    {
        if (!myComponents.empty()) {
            std::vector<DisplayBody>& bodies = myComponents.back().bodies;
            for (std::size_t i = 0; i < bodies.size() && !myLooks.empty(); ++i) {
                auto& [look, name] = myLooks[std::min(i, myLooks.size() - 1)];
                bodies[i].look = look;
                bodies[i].name = i < myLooks.size() ? name : Base_UTF16String();
            }
        }
        myLooks.clear();
        myLeft = 0;
    }

    std::string_view myBytes;
    std::vector<DisplayComponent>& myComponents;
    std::optional<DisplayLook>& myDocumentLook;
    std::size_t myLeft = 0; ///< faces of the body that are still to come
    std::vector<std::pair<DisplayLook, Base_UTF16String>> myLooks; ///< behind the last face
};

} // namespace

DisplayList::DisplayList(std::string bytes) : myBytes(std::move(bytes))
{
    Scanner(myBytes, myComponents, myLook).Run();
}

} // namespace cadex::solidworks
