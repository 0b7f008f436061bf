#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

/// The paths that are files, and the STEP and IGES files below those that are folders, sorted.
inline std::vector<std::string> CadFilesOf(const std::vector<std::string>& paths)
{
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        std::error_code none;
        if (!std::filesystem::is_directory(path, none)) {
            files.push_back(path);
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path, none)) {
            const std::string extension = entry.path().extension().string();
            if (extension == ".step" || extension == ".stp" || extension == ".igs" || extension == ".iges") {
                files.push_back(entry.path().string());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}
