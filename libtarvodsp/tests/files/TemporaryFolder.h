#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace testing_files
{
/// A fresh directory for one test, removed with everything in it at the end.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        static int counter = 0;
        path = std::filesystem::temp_directory_path() /
               ("tarvodsp_files_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path / name).string(); }
    std::string str() const { return path.string(); }

    /// Writes `bytes` with the standard library, independently of the classes under test.
    std::string write(const std::string& name, const std::string& bytes) const
    {
        const auto file = *this / name;
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

private:
    std::filesystem::path path;
};

inline std::string readAll(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
} // namespace testing_files
