#pragma once

#include <string>
#include <vector>

namespace kelvorig::test {

// A fresh empty directory under the system's temporary directory, removed with the object.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

void WriteFile(const std::string& path, const std::string& contents);
std::string ReadFile(const std::string& path);
// The lines of `text` without their line ends.
std::vector<std::string> Lines(const std::string& text);
// Standard error without the lines that name each mesh's unit and extent, which every run with a
// surface prints first.
std::string WithoutMeshLines(const std::string& err);

} // namespace kelvorig::test
