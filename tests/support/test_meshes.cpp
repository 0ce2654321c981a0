#include "support/test_meshes.h"

#include "support/cli_runner.h"

#include <Eigen/Geometry>

#include <bit>
#include <cmath>
#include <sstream>

namespace kelvorig::test {

Eigen::Vector3f TestMesh::FacetNormal(size_t t) const
{
    const std::array<int, 3>& f = triangles[t];
    const Eigen::Vector3f cross = (vertices[f[1]] - vertices[f[0]]).cross(vertices[f[2]] - vertices[f[0]]);
    return cross.norm() > 0.0f ? Eigen::Vector3f(cross.normalized()) : Eigen::Vector3f::Zero();
}

TestMesh MakeBox(const Eigen::Vector3f& size, const Eigen::Vector3f& centre)
{
    TestMesh mesh;
    for (int i = 0; i < 8; ++i)
        mesh.vertices.push_back(centre + 0.5f * Eigen::Vector3f((i & 1) ? size.x() : -size.x(),
                                                                (i & 2) ? size.y() : -size.y(),
                                                                (i & 4) ? size.z() : -size.z()));
    // Two facets per face, counter-clockwise seen from outside: -z, +z, -y, +y, -x, +x.
    mesh.triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                      {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    return mesh;
}

TestMesh MakePlate(float width, float thickness)
{
    return MakeBox(Eigen::Vector3f(width, width, thickness), Eigen::Vector3f(0.0f, 0.0f, -0.5f * thickness));
}

TestMesh MakeTetrahedron(float edge)
{
    return {{Eigen::Vector3f::Zero(), {edge, 0, 0}, {0, edge, 0}, {0, 0, edge}},
            {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}}};
}

TestMesh MakeSphere(float radius, int rings, int segments)
{
    TestMesh mesh;
    mesh.vertices.emplace_back(0.0f, 0.0f, radius);
    for (int ring = 1; ring < rings; ++ring)
        for (int segment = 0; segment < segments; ++segment)
        {
            const double polar = 3.141592653589793 * ring / rings, azimuth = 6.283185307179586 * segment / segments;
            mesh.vertices.push_back(radius * Eigen::Vector3d(std::sin(polar) * std::cos(azimuth),
                                                             std::sin(polar) * std::sin(azimuth), std::cos(polar))
                                                 .cast<float>());
        }
    mesh.vertices.emplace_back(0.0f, 0.0f, -radius);
    const int south = static_cast<int>(mesh.vertices.size()) - 1;
    const auto at = [segments](int ring, int segment) { return 1 + (ring - 1) * segments + segment % segments; };
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

TestMesh MakeOccludedCube()
{
    const TestMesh slab = MakeBox(Eigen::Vector3f(0.02f, 0.3f, 0.3f), Eigen::Vector3f(0.09f, 0.0f, 0.0f));
    const TestMesh post = MakeBox(Eigen::Vector3f(0.03f, 0.03f, 0.12f), Eigen::Vector3f(0.0f, 0.0f, 0.11f));
    return Combine(Combine(MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)), slab), post);
}

std::string BinaryStl(const TestMesh& mesh)
{
    std::string bytes = "test binary" + std::string(69, ' ');
    const auto appendWord = [&bytes](uint32_t word)
    {
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<char>((word >> shift) & 0xFF));
    };
    appendWord(static_cast<uint32_t>(mesh.triangles.size()));
    for (size_t t = 0; t < mesh.triangles.size(); ++t)
    {
        for (const Eigen::Vector3f& v : {mesh.FacetNormal(t), mesh.vertices[mesh.triangles[t][0]],
                                         mesh.vertices[mesh.triangles[t][1]], mesh.vertices[mesh.triangles[t][2]]})
            for (int k = 0; k < 3; ++k)
                appendWord(std::bit_cast<uint32_t>(v[k]));
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
        text << "  facet normal " << mesh.FacetNormal(t).transpose() << "\n    outer loop\n";
        for (int corner : mesh.triangles[t])
            text << "      vertex " << mesh.vertices[corner].transpose() << "\n";
        text << "    endloop\n  endfacet\n";
    }
    text << "endsolid " << name << "\n";
    return text.str();
}

void WriteBinaryStl(const std::string& path, const TestMesh& mesh)
{
    WriteFile(path, BinaryStl(mesh));
}

} // namespace kelvorig::test
