// Small models for the STEP writer's tests, and a way to write them.
#pragma once

#include <cadex/ModelData_Assembly.hxx>
#include <cadex/ModelData_IndexedTriangleSet.hxx>
#include <cadex/ModelData_Instance.hxx>
#include <cadex/ModelData_Model.hxx>
#include <cadex/ModelData_Part.hxx>
#include <cadex/ModelData_PolyLineSet.hxx>
#include <cadex/STEP_Writer.hxx>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace cadex {

/// A cube with one corner at `at`; `faces` of its twelve triangles; inside out on demand.
inline void AddCube(ModelData_IndexedTriangleSet& set, const ModelData_Point& at, double size,
                    std::size_t faces = 12, bool insideOut = false)
{
    static constexpr int outward[36] = {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                                        2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5};
    std::vector<ModelData_Point> points;
    points.reserve(8);
    for (int i = 0; i < 8; ++i) {
        points.emplace_back(at.X() + size * (i & 1), at.Y() + size * ((i >> 1) & 1),
                            at.Z() + size * (i >> 2));
    }
    std::vector<int> indices(outward, outward + 3 * faces);
    for (std::size_t i = 0; insideOut && i < indices.size(); i += 3) {
        std::swap(indices[i], indices[i + 1]);
    }
    set.AddCoordinates(points.data(), points.size(), indices.data(), indices.size());
}

inline ModelData_Part PartOf(const ModelData_PolyShape& shape, const char* name)
{
    return ModelData_Part(ModelData_PolyRepresentation(shape), name);
}

inline ModelData_Part CubePart(const char* name, double size = 10)
{
    ModelData_IndexedTriangleSet set;
    AddCube(set, {}, size);
    return PartOf(set, name);
}

inline ModelData_Model ModelOf(const ModelData_SceneGraphElement& root)
{
    ModelData_Model model("model");
    model.AddRoot(root);
    return model;
}

/// A folder of its own, removed at the end.
class ScratchFolder
{
public:
    ScratchFolder()
        : myPath(std::filesystem::temp_directory_path() /
                 ("part21-\u9f7f-" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directories(myPath);
    }
    ~ScratchFolder() { std::filesystem::remove_all(myPath); }

    std::filesystem::path operator/(const char* name) const { return myPath / name; }
    std::size_t NumberOfEntries() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(myPath),
                                                      std::filesystem::directory_iterator()));
    }

private:
    std::filesystem::path myPath;
};

inline std::string ContentOf(const std::filesystem::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

inline std::size_t CountOf(const std::string& text, const std::string& word)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

inline bool WriteStep(const ModelData_Model& model, const std::filesystem::path& file,
                      Base_LengthUnit unit = Base_LU_Millimeters)
{
    STEP_Writer writer;
    writer.Parameters().LengthUnit() = unit;
    return writer.Transfer(model) && writer.WriteFile(Base_UTF16String(file.c_str()));
}

} // namespace cadex
