#pragma once
// A fresh private temporary directory for one test, removed with everything in
// it when the object goes away. Header-only, so test programs that do not link
// the test support library (the CLI tests, benchmarks) can use it too.
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace ocwtest {

class TempDir {
public:
    // Made with mkdtemp below $TMPDIR (else /tmp); throws std::runtime_error
    // when that fails.
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ocw-test-XXXXXX").string();
        if (::mkdtemp(&pattern[0]) == nullptr) {
            throw std::runtime_error("cannot create a temporary directory " + pattern);
        }
        m_path = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }

    // Writes text to name (which may contain subdirectories) below the
    // directory and returns the full path. An existing file is truncated and
    // rewritten in place, keeping its inode, as an editor that saves in place
    // would. Throws std::runtime_error when the file cannot be written.
    std::string write(const std::string& name, const std::string& text) const {
        const std::filesystem::path file = std::filesystem::path(m_path) / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << text;
        out.close();
        if (!out) throw std::runtime_error("cannot write " + file.string());
        return file.string();
    }

private:
    std::string m_path;
};

}  // namespace ocwtest
