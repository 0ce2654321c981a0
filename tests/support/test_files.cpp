#include "support/test_files.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <stdlib.h>

namespace kelvorig::test {

TempDir::TempDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "kelvorig-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void WriteFile(const std::string& path, const std::string& contents)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << contents;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::string WithoutMeshLines(const std::string& err)
{
    std::string kept;
    for (const std::string& line : Lines(err))
        kept += line.starts_with("mesh \"") ? "" : line + "\n";
    return kept;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace kelvorig::test
