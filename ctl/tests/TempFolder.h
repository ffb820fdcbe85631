// A folder under /tmp for a test's files, removed with them.
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

struct TempFolder {
    TempFolder()
    {
        char name[] = "/tmp/corvelctlXXXXXX";
        path = mkdtemp(name);
    }
    ~TempFolder() { std::filesystem::remove_all(path); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // Writes `name` with `mode`; its path.
    std::string file(const std::string& name, const std::string& content, mode_t mode) const
    {
        const std::string filePath = path + "/" + name;
        std::ofstream(filePath, std::ios::binary) << content;
        chmod(filePath.c_str(), mode);
        return filePath;
    }
    std::string read(const std::string& name) const
    {
        std::ostringstream content;
        content << std::ifstream(path + "/" + name, std::ios::binary).rdbuf();
        return content.str();
    }
    std::set<std::string> names() const
    {
        std::set<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(path)) result.insert(entry.path().filename());
        return result;
    }

    std::string path;
};
