#include "geometry/stl_reader.h"

#include "support/formatted_text.h"

#include <array>
#include <bit>
#include <cctype>
#include <cstdio>

#include <sys/stat.h>

namespace kelvorig {
namespace {

// Bytes looked at to tell a binary file from a text one.
constexpr int kProbeLength = 256;
// Capacity of a word or line buffer, terminator included.
constexpr size_t kBufferSize = 2048;

// Where the bytes come from: the file at `path`, or `bytes` in memory when there is no path.
// `name` is what the messages call it.
struct StlSource
{
    const std::string& name;
    const std::string* path;
    std::string_view bytes;
};

FILE* OpenSource(const StlSource& source, const char* mode)
{
    if (source.path != nullptr)
        return std::fopen(source.path->c_str(), mode);
    static char noBytes = '\0';
    char* data = source.bytes.empty() ? &noBytes : const_cast<char*>(source.bytes.data());
    return fmemopen(data, source.bytes.size(), mode); // read only, so the cast is harmless
}

// Closes the file on every path out of the reader.
class StlFile
{
public:
    StlFile(const StlSource& source, const char* mode) : file(OpenSource(source, mode)) {}
    ~StlFile() { Close(); }
    StlFile(const StlFile&) = delete;
    StlFile& operator=(const StlFile&) = delete;

    bool IsOpen() const { return file != nullptr; }
    FILE* get() const { return file; }
    void Close()
    {
        if (file != nullptr)
            std::fclose(file);
        file = nullptr;
    }

private:
    FILE* file;
};

Status ReportOpenFailure(const std::string& path)
{
    return Status::Failure(Formatted("IOError: %s could not be opened...\n", path.c_str()));
}

Status ReportDirectory(const std::string& path)
{
    return Status::Failure(Formatted("IOError: %s is a directory.\n", path.c_str()));
}

bool IsDirectory(FILE* file)
{
    struct stat status;
    return fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
}

Status ReportTooShort(const std::string& path)
{
    return Status::Failure(Formatted("IOError: %s too short.\n", path.c_str()));
}

Status ReportBadFormat(const std::string& path, int code)
{
    return Status::Failure(Formatted("IOError: %s bad format (%d).\n", path.c_str(), code));
}

// Reads one white-space-delimited word, as "%s" would. False when the file ends first.
// note: a word is consumed whole however long it is, but only its first 2047 characters
// are kept; that is longer than any keyword, so an overlong word never matches one.
bool ReadWord(FILE* file, std::string& word)
{
    word.clear();
    int c = std::getc(file);
    while (c != EOF && std::isspace(c))
        c = std::getc(file);
    if (c == EOF)
        return false;
    while (c != EOF && !std::isspace(c))
    {
        if (word.size() < kBufferSize - 1)
            word.push_back(static_cast<char>(c));
        c = std::getc(file);
    }
    if (c != EOF)
        std::ungetc(c, file);
    return true;
}

// Three numbers read as "%g %g %g" into 32-bit floats.
bool ReadTriple(FILE* file, std::array<float, 3>& triple)
{
    for (float& value : triple)
    {
        if (std::fscanf(file, "%g", &value) != 1)
            return false;
    }
    return true;
}

// True when a byte in the first 256 is neither printable nor white space.
bool HasBinaryMark(FILE* file)
{
    for (int i = 0; i < kProbeLength; ++i)
    {
        const int c = std::getc(file);
        if (c == EOF)
            return false;
        if (!std::isprint(c) && !std::isspace(c))
            return true;
    }
    return false;
}

// The rest of a text file, behind its first word "solid".
Status ReadTextBody(FILE* file, const std::string& path, FloatLists& vertices, IndexLists& facets, FloatLists& normals)
{
    std::array<char, kBufferSize> line;
    if (std::fgets(line.data(), static_cast<int>(line.size()), file) == nullptr)
        return ReportTooShort(path);

    std::string first;
    std::string second;
    std::array<float, 3> triple;
    while (true)
    {
        if (!ReadWord(file, first))
            return ReportBadFormat(path, 1);
        if (first == "endsolid")
            return {};
        if (!ReadWord(file, second) || !ReadTriple(file, triple) || first != "facet" || second != "normal")
            return ReportBadFormat(path, 1);
        normals.push_back(triple);

        if (!ReadWord(file, first) || !ReadWord(file, second) || first != "outer" || second != "loop")
            return ReportBadFormat(path, 2);

        std::vector<int32_t> facet;
        while (true)
        {
            if (!ReadWord(file, first))
                return ReportBadFormat(path, 4);
            if (first == "endloop")
                break;
            if (first != "vertex")
                return ReportBadFormat(path, 4);
            if (!ReadTriple(file, triple))
                return ReportBadFormat(path, 3);
            facet.push_back(static_cast<int32_t>(vertices.size()));
            vertices.push_back(triple);
        }
        facets.push_back(std::move(facet));

        if (!ReadWord(file, first) || first != "endfacet")
            return ReportBadFormat(path, 5);
    }
}

uint32_t LittleEndianWord(const unsigned char* bytes)
{
    return static_cast<uint32_t>(bytes[0]) | (static_cast<uint32_t>(bytes[1]) << 8) |
           (static_cast<uint32_t>(bytes[2]) << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
}

// Three little-endian 32-bit floats; false on a short read.
bool ReadBinaryTriple(FILE* file, std::array<float, 3>& triple)
{
    std::array<unsigned char, 12> bytes;
    if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size())
        return false;
    for (size_t k = 0; k < 3; ++k)
        triple[k] = std::bit_cast<float>(LittleEndianWord(bytes.data() + 4 * k));
    return true;
}

Status ReadBinaryBody(FILE* file, const std::string& path, FloatLists& vertices, IndexLists& facets,
                      FloatLists& normals)
{
    std::array<unsigned char, 80> header;
    if (std::fread(header.data(), 1, header.size(), file) != header.size())
        return ReportBadFormat(path, 1);
    std::array<unsigned char, 4> countBytes;
    if (std::fread(countBytes.data(), 1, countBytes.size(), file) != countBytes.size())
        return ReportBadFormat(path, 2);
    const int32_t count = static_cast<int32_t>(LittleEndianWord(countBytes.data()));

    // note: the lists grow as facets arrive instead of being sized from the count, so a
    // count far beyond the file's length fails at the short read rather than in allocation.
    std::array<float, 3> triple;
    for (int32_t t = 0; t < count; ++t)
    {
        if (!ReadBinaryTriple(file, triple))
            return ReportBadFormat(path, 3);
        normals.push_back(triple);
        for (int k = 0; k < 3; ++k)
        {
            if (!ReadBinaryTriple(file, triple))
                return ReportBadFormat(path, 4);
            vertices.push_back(triple);
        }
        const int32_t first = 3 * t;
        facets.push_back({first, first + 1, first + 2});
        std::array<unsigned char, 2> attributes;
        if (std::fread(attributes.data(), 1, attributes.size(), file) != attributes.size())
            return ReportBadFormat(path, 5);
    }
    return {};
}

// Opens the source up to three times, as the reader of a file on disk would.
Status ReadStl(const StlSource& source, FloatLists& vertices, IndexLists& facets, FloatLists& normals)
{
    const std::string& path = source.name;
    bool binaryMark = false;
    {
        StlFile probe(source, "rb");
        if (!probe.IsOpen())
            return ReportOpenFailure(path);
        // note: a directory opens fine and then reads as nothing at all.
        if (IsDirectory(probe.get()))
            return ReportDirectory(path);
        binaryMark = HasBinaryMark(probe.get());
    }

    StlFile text(source, "r");
    if (!text.IsOpen())
        return ReportOpenFailure(path);
    vertices.clear();
    facets.clear();
    normals.clear();

    std::string firstWord;
    if (!ReadWord(text.get(), firstWord))
        return ReportTooShort(path);
    if (!binaryMark && firstWord == "solid")
        return ReadTextBody(text.get(), path, vertices, facets, normals);
    text.Close();

    StlFile binary(source, "rb");
    if (!binary.IsOpen())
        return ReportOpenFailure(path);
    return ReadBinaryBody(binary.get(), path, vertices, facets, normals);
}

} // namespace

Status ReadStlFile(const std::string& path, FloatLists& vertices, IndexLists& facets, FloatLists& normals)
{
    return ReadStl(StlSource{path, &path, {}}, vertices, facets, normals);
}

Status ReadStlBytes(const std::string& name, std::string_view bytes, FloatLists& vertices, IndexLists& facets,
                    FloatLists& normals)
{
    return ReadStl(StlSource{name, nullptr, bytes}, vertices, facets, normals);
}

} // namespace kelvorig
