#include "support/test_meshes.h"

#include "support/cli_runner.h"

#include <Eigen/Geometry>

#include <bit>
#include <cmath>
#include <cstdint>
#include <sstream>

namespace kelvorig::test {
namespace {

void AppendWord(std::string& bytes, uint32_t word)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>((word >> shift) & 0xFF));
}

void AppendVector(std::string& bytes, const Eigen::Vector3f& v)
{
    for (int k = 0; k < 3; ++k)
        AppendWord(bytes, std::bit_cast<uint32_t>(v[k]));
}

} // namespace

Eigen::Vector3f TestMesh::FacetNormal(size_t t) const
{
    const std::array<int, 3>& f = triangles[t];
    const Eigen::Vector3f cross = (vertices[f[1]] - vertices[f[0]]).cross(vertices[f[2]] - vertices[f[0]]);
    const float length = cross.norm();
    return length > 0.0f ? Eigen::Vector3f(cross / length) : Eigen::Vector3f::Zero();
}

TestMesh MakeBox(const Eigen::Vector3f& size, const Eigen::Vector3f& centre)
{
    TestMesh mesh;
    const Eigen::Vector3f half = 0.5f * size;
    for (int i = 0; i < 8; ++i)
    {
        const Eigen::Vector3f corner((i & 1) ? half.x() : -half.x(), (i & 2) ? half.y() : -half.y(),
                                     (i & 4) ? half.z() : -half.z());
        mesh.vertices.push_back(centre + corner);
    }
    // Two facets per face, counter-clockwise seen from outside.
    mesh.triangles = {{0, 2, 1}, {1, 2, 3},   // -z
                      {4, 5, 6}, {5, 7, 6},   // +z
                      {0, 1, 4}, {1, 5, 4},   // -y
                      {2, 6, 3}, {3, 6, 7},   // +y
                      {0, 4, 2}, {2, 4, 6},   // -x
                      {1, 3, 5}, {3, 7, 5}};  // +x
    return mesh;
}

TestMesh MakePlate(float width, float thickness)
{
    return MakeBox(Eigen::Vector3f(width, width, thickness), Eigen::Vector3f(0.0f, 0.0f, -0.5f * thickness));
}

TestMesh MakeTetrahedron(float edge)
{
    TestMesh mesh;
    mesh.vertices = {Eigen::Vector3f::Zero(), Eigen::Vector3f(edge, 0, 0), Eigen::Vector3f(0, edge, 0),
                     Eigen::Vector3f(0, 0, edge)};
    mesh.triangles = {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}};
    return mesh;
}

TestMesh MakeSphere(float radius, int rings, int segments, const Eigen::Vector3f& centre)
{
    TestMesh mesh;
    const double pi = 3.141592653589793;
    mesh.vertices.push_back(centre + Eigen::Vector3f(0, 0, radius));
    for (int ring = 1; ring < rings; ++ring)
    {
        const double polar = pi * ring / rings;
        for (int segment = 0; segment < segments; ++segment)
        {
            const double azimuth = 2.0 * pi * segment / segments;
            mesh.vertices.push_back(centre + radius * Eigen::Vector3f(static_cast<float>(std::sin(polar) * std::cos(azimuth)),
                                                                      static_cast<float>(std::sin(polar) * std::sin(azimuth)),
                                                                      static_cast<float>(std::cos(polar))));
        }
    }
    mesh.vertices.push_back(centre + Eigen::Vector3f(0, 0, -radius));
    const int south = static_cast<int>(mesh.vertices.size()) - 1;
    auto at = [segments](int ring, int segment) { return 1 + (ring - 1) * segments + segment % segments; };
    for (int segment = 0; segment < segments; ++segment)
    {
        mesh.triangles.push_back({0, at(1, segment), at(1, segment + 1)});
        for (int ring = 1; ring + 1 < rings; ++ring)
        {
            mesh.triangles.push_back({at(ring, segment), at(ring + 1, segment), at(ring + 1, segment + 1)});
            mesh.triangles.push_back({at(ring, segment), at(ring + 1, segment + 1), at(ring, segment + 1)});
        }
        mesh.triangles.push_back({south, at(rings - 1, segment + 1), at(rings - 1, segment)});
    }
    return mesh;
}

TestMesh Combine(const TestMesh& first, const TestMesh& second)
{
    TestMesh mesh = first;
    const int offset = static_cast<int>(first.vertices.size());
    mesh.vertices.insert(mesh.vertices.end(), second.vertices.begin(), second.vertices.end());
    for (const std::array<int, 3>& f : second.triangles)
        mesh.triangles.push_back({f[0] + offset, f[1] + offset, f[2] + offset});
    return mesh;
}

TestMesh Scaled(const TestMesh& mesh, float factor)
{
    TestMesh scaled = mesh;
    for (Eigen::Vector3f& v : scaled.vertices)
        v *= factor;
    return scaled;
}

std::string BinaryStl(const TestMesh& mesh)
{
    std::string bytes(80, ' ');
    bytes.replace(0, 11, "test binary");
    AppendWord(bytes, static_cast<uint32_t>(mesh.triangles.size()));
    for (size_t t = 0; t < mesh.triangles.size(); ++t)
    {
        AppendVector(bytes, mesh.FacetNormal(t));
        for (int corner : mesh.triangles[t])
            AppendVector(bytes, mesh.vertices[corner]);
        bytes.append(2, '\0');
    }
    return bytes;
}

std::string TextStl(const TestMesh& mesh, const std::string& name)
{
    std::ostringstream text;
    text.precision(9);
    text << "solid " << name << "\n";
    for (size_t t = 0; t < mesh.triangles.size(); ++t)
    {
        const Eigen::Vector3f n = mesh.FacetNormal(t);
        text << "  facet normal " << n.x() << " " << n.y() << " " << n.z() << "\n    outer loop\n";
        for (int corner : mesh.triangles[t])
        {
            const Eigen::Vector3f& v = mesh.vertices[corner];
            text << "      vertex " << v.x() << " " << v.y() << " " << v.z() << "\n";
        }
        text << "    endloop\n  endfacet\n";
    }
    text << "endsolid " << name << "\n";
    return text.str();
}

void WriteBinaryStl(const std::string& path, const TestMesh& mesh)
{
    WriteFile(path, BinaryStl(mesh));
}

void WriteTextStl(const std::string& path, const TestMesh& mesh)
{
    WriteFile(path, TextStl(mesh));
}

} // namespace kelvorig::test
