#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>

inline std::string readWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeWholeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A new, empty folder, removed with all that is in it.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "fcurvelib-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        m_path = pattern;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& path() const { return m_path; }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

    // Its files, "name=content" each; of a link, "name>target".
    std::set<std::string> contents() const {
        std::set<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(m_path)) {
            const std::string name = entry.path().filename().string();
            if (entry.is_symlink()) {
                all.insert(name + '>' + std::filesystem::read_symlink(entry).string());
            } else if (entry.is_regular_file()) {
                all.insert(name + '=' + readWholeFile(entry.path().string()));
            }
        }
        return all;
    }

private:
    std::filesystem::path m_path;
};
