#include "cadexchange/CZemtarCADExchangeReaderHandler.h"

#include "cadexchange/Truncation.h"
#include "common/encoding/CZemtarEncoding.h"
#include "host/CZemtarDocument.h"
#include "host/CZemtarMatrix.h"
#include "host/CZemtarMetaData.h"
#include "host/CZemtarSceneNode.h"
#include "host/CZemtarTransform.h"
#include "host/CZemtarTransformNode.h"

#include <cadex/Base_Reader.hxx>
#include <cadex/ModelAlgo_BRepMesher.hxx>
#include <cadex/ModelAlgo_BRepMesherParameters.hxx>
#include <cadex/ModelData_RepresentationMask.hxx>
#include <cadex/ModelData_Transformation.hxx>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace Zemtar {

namespace {

struct FreeText
{
    void operator()(const char* text) const { std::free(const_cast<char*>(text)); }
};

void Report(const std::string& line)
{
    std::cerr << line << std::endl;
}

bool ReadFile(cadex::Base_Reader& reader, const CZemtarString& fileName)
{
    return reader.ReadFile(cadex::Base_UTF16String(fileName.toStdString().c_str()));
}

/// Whether the file's beginning shows that it holds no text of any encoding but UTF-16 and UTF-32: zeros, and
/// more control characters than any text has. Looking for an encoding in it would take longer than reading it
/// does, and a copy in UTF-8 would be no file of any format.
bool IsPlainlyBinary(const CZemtarString& fileName)
{
    std::array<char, 4096> block;
    std::ifstream file(fileName.toStdString(), std::ios::binary);
    file.read(block.data(), block.size());
    const std::string_view bytes(block.data(), static_cast<std::size_t>(file.gcount()));
    for (const std::string_view mark :
         {std::string_view("\xFF\xFE"), std::string_view("\xFE\xFF"), std::string_view("\0\0\xFE\xFF", 4)}) {
        if (bytes.substr(0, mark.size()) == mark) {
            return false;
        }
    }
    // White space, and what switches between character sets in seven bits, may stand in a text.
    constexpr std::string_view InTexts = "\t\n\v\f\r\x0E\x0F\x1A\x1B";
    const auto controls = std::count_if(bytes.begin(), bytes.end(), [&](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 && InTexts.find(byte) == std::string_view::npos;
    });
    constexpr std::size_t BytesPerControl = 32;
    return bytes.find('\0') != std::string_view::npos &&
           static_cast<std::size_t>(controls) > bytes.size() / BytesPerControl;
}

/// Reads the file from its UTF-8 copy where it needs one, and from the source when the copy cannot be read.
bool ReadRepaired(cadex::Base_Reader& reader, const CZemtarString& source)
{
    CZemtarString fileName = source;
    CZemtarString extension = source.Extension();
    extension.ToLower();
    const bool isIges = extension == "igs" || extension == "iges";

    const std::unique_ptr<const char, FreeText> charset(
        IsPlainlyBinary(source) ? nullptr : CZemtarEncoding::DetectFileEncoding(source));
    const bool converted = charset && *charset != '\0';
    if (converted) {
        fileName = CZemtarEncoding::EncodeFileToUtf8(source, charset.get(), false, isIges);
    }
    if (ReadFile(reader, fileName) || (converted && ReadFile(reader, source))) {
        return true;
    }
    Report("Failed to read the file " + source.toStdString());
    return false;
}

struct Tolerance
{
    int angle; ///< degrees
    double chord;
};

/// The ends of the bands of levels, 25 levels apart.
constexpr int BandWidth = 25;
constexpr Tolerance BandEnds[] = {{5, 0.0025}, {15, 0.004}, {30, 0.01}, {40, 0.05}, {60, 0.08}};
/// Above the last band; the middle of the scale, not its end, is wanted.
constexpr Tolerance BeyondBands = {30, 0.01};

/// The slider's 20 to 95 as a level of 0 to 100; factors far outside end at the limits of int.
int LevelOf(int tessellationFactor)
{
    const double level = (tessellationFactor - 20.0) * 1.3333333333333333 + 0.5;
    return level >= 2147483648.0 ? std::numeric_limits<int>::max() : TruncateToInt(level);
}

} // namespace

CZemtarCADExchangeReaderHandler* CZemtarCADExchangeReaderHandler::m_instance = nullptr;

CZemtarCADExchangeReaderHandler* CZemtarCADExchangeReaderHandler::getInstance()
{
    if (m_instance == nullptr) {
        m_instance = new CZemtarCADExchangeReaderHandler;
    }
    return m_instance;
}

void CZemtarCADExchangeReaderHandler::setTextureOutputDirectory(CZemtarString dir)
{
    m_textureVisitor.SetOutputDirectory(std::move(dir));
}

void CZemtarCADExchangeReaderHandler::setImportPolylines(bool on)
{
    m_importPolylines = on;
}

void CZemtarCADExchangeReaderHandler::reset()
{
    m_elementNodes.clear();
    m_appearanceMaterials.clear();
    m_currentMaterial = nullptr;
    m_document = nullptr;
}

CZemtarDocument* CZemtarCADExchangeReaderHandler::Import(CZemtarString fileName, cadex::Base_Reader* reader,
                                                         int tessellationFactor)
{
    if (reader == nullptr) {
        Report("Reader is NULL!");
        return nullptr;
    }
    const auto start = std::chrono::steady_clock::now();
    cadex::ModelData_Model model{cadex::Base_UTF16String()};
    if (!ReadRepaired(*reader, fileName)) {
        return nullptr;
    }
    if (!reader->Transfer(model)) {
        Report("Failed to transfer model data to specified format");
        return nullptr;
    }

    double angle = 0.0;
    double chord = 0.0;
    ProcessTessellation(LevelOf(tessellationFactor), angle, chord);
    cadex::ModelAlgo_BRepMesherParameters parameters(cadex::ModelAlgo_BRepMesherParameters::Fine, true);
    parameters.SetAngularDeflection(angle * 3.1415926535 / 180.0);
    parameters.SetChordalDeflection(chord);
    cadex::ModelAlgo_BRepMesher(parameters).Compute(model, true);
    m_readAndMeshSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return Walk(model);
}

CZemtarDocument* CZemtarCADExchangeReaderHandler::Walk(const cadex::ModelData_Model& model)
{
    reset();
    m_nodeStack.clear();
    std::unique_ptr<CZemtarDocument> document(CZemtarDocument::Create(true));
    m_document = document.get();
    try {
        model.Accept(*this);
    } catch (...) {
        m_nodeStack.clear();
        reset();
        throw;
    }
    return document.release();
}

void CZemtarCADExchangeReaderHandler::ProcessTessellation(int level, double& angularDeflectionDegrees,
                                                          double& chordalDeflection)
{
    const auto bands = static_cast<int>(std::size(BandEnds)) - 1;
    if (level > bands * BandWidth) {
        angularDeflectionDegrees = BeyondBands.angle;
        chordalDeflection = BeyondBands.chord;
        return;
    }
    // A level on a border belongs to the band below it; negative levels belong to the second band.
    const int band = level < 0 ? 1 : level <= BandWidth ? 0 : (level - 1) / BandWidth;
    const Tolerance& low = BandEnds[band];
    const Tolerance& high = BandEnds[band + 1];
    const std::int64_t lowWeight = std::int64_t{band + 1} * BandWidth - level;
    const std::int64_t highWeight = std::int64_t{level} - band * BandWidth;
    const std::int64_t wholeDegrees = (low.angle * lowWeight + high.angle * highWeight) / BandWidth;
    angularDeflectionDegrees = static_cast<double>(wholeDegrees);
    chordalDeflection =
        (high.chord * static_cast<double>(highWeight) + low.chord * static_cast<double>(lowWeight)) /
        BandWidth;
}

void CZemtarCADExchangeReaderHandler::operator()(const cadex::ModelData_Part& part)
{
    ProcessPart(part);
}

bool CZemtarCADExchangeReaderHandler::VisitEnter(const cadex::ModelData_Assembly& assembly)
{
    ProcessAssembly(assembly);
    return true;
}

void CZemtarCADExchangeReaderHandler::VisitLeave(const cadex::ModelData_Assembly&)
{
    Pop();
}

bool CZemtarCADExchangeReaderHandler::VisitEnter(const cadex::ModelData_Instance& instance)
{
    return ProcessInstance(instance);
}

void CZemtarCADExchangeReaderHandler::VisitLeave(const cadex::ModelData_Instance&)
{
    // The SDK leaves every instance that it entered, also one whose reference it was told not to visit.
    Pop();
}

void CZemtarCADExchangeReaderHandler::ProcessAssembly(cadex::ModelData_Assembly assembly)
{
    CZemtarSceneNode* node = NewNode(assembly);
    node->SetNodeType(CZemtarSceneNode::eNodeTypeAssembly);
    Push(node);
    m_elementNodes.emplace(assembly, node);
    UseAppearance(assembly.Appearance());
    ProcessMetaData(node, assembly);
}

bool CZemtarCADExchangeReaderHandler::ProcessInstance(cadex::ModelData_Instance instance)
{
    const auto known = m_elementNodes.find(instance.Reference());
    const bool isNew = known == m_elementNodes.end();
    CZemtarSceneNode* node = nullptr;
    if (isNew) {
        node = NewNode(instance);
    } else {
        node = known->second->CreateTreeCopy(m_document, nullptr, true);
        node->SetLocalTransform(CZemtarTransform::Create(m_document));
        node->SetName(instance.Name().ToWString());
    }
    Push(node);
    if (instance.HasTransformation()) {
        const cadex::ModelData_Transformation& transformation = instance.Transformation();
        CZemtarMatrix matrix;
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 4; ++column) {
                matrix.M(row, column) = transformation.Data(row, column);
            }
        }
        node->SetLocalMatrix(matrix);
    }
    UseAppearance(instance.Appearance());
    ProcessMetaData(node, instance);
    return isNew;
}

void CZemtarCADExchangeReaderHandler::ProcessPart(cadex::ModelData_Part part)
{
    CZemtarSceneNode* node = NewNode(part);
    node->SetNodeType(CZemtarSceneNode::eNodeTypePart);
    Push(node);
    m_elementNodes.emplace(part, node);
    UseAppearance(part.Appearance());
    ProcessMetaData(node, part);
    const cadex::ModelData_PolyRepresentation mesh = part.PolyRepresentation(cadex::ModelData_RM_Poly);
    if (!mesh.IsNull()) {
        Process3DObject(mesh);
        ProcessSolidHints(node, part);
    }
    Pop();
}

CZemtarSceneNode* CZemtarCADExchangeReaderHandler::NewNode(const cadex::ModelData_SceneGraphElement& element)
{
    CZemtarSceneNode* node = CZemtarTransformNode::Create(m_document);
    node->SetName(element.Name().ToWString());
    return node;
}

void CZemtarCADExchangeReaderHandler::Push(CZemtarSceneNode* node)
{
    if (!m_nodeStack.empty()) {
        node->SetParent(m_nodeStack.back());
    }
    m_nodeStack.push_back(node);
}

void CZemtarCADExchangeReaderHandler::Pop()
{
    if (!m_nodeStack.empty()) {
        m_nodeStack.pop_back();
    }
}

} // namespace Zemtar
