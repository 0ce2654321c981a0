#include "support/test_meshes.h"

#include "support/cli_runner.h"

#include <Eigen/Geometry>

#include <bit>
#include <cmath>
#include <cstring>
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

TestMesh Revolve(const std::vector<Eigen::Vector2f>& profile, int steps)
{
    TestMesh mesh;
    const auto at = [&](size_t k, int step)
    {
        const float angle = 6.2831853f * static_cast<float>(step % steps) / static_cast<float>(steps);
        const Eigen::Vector2f& p = profile[k % profile.size()];
        return Eigen::Vector3f(p.x() * std::cos(angle), p.x() * std::sin(angle), p.y());
    };
    for (size_t k = 0; k < profile.size(); ++k)
        for (int s = 0; s < steps; ++s)
            for (const std::array<Eigen::Vector3f, 3>& t : {std::array{at(k, s), at(k + 1, s), at(k + 1, s + 1)},
                                                            std::array{at(k, s), at(k + 1, s + 1), at(k, s + 1)}})
                if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0])
                {
                    const int first = static_cast<int>(mesh.vertices.size());
                    mesh.vertices.insert(mesh.vertices.end(), t.begin(), t.end());
                    mesh.triangles.push_back({first, first + 1, first + 2});
                }
    return mesh;
}

TestMesh MakeSphere(float radius, int rings, int segments)
{
    std::vector<Eigen::Vector2f> profile;
    for (int ring = 0; ring <= rings; ++ring)
    {
        const double polar = 3.141592653589793 * ring / rings;
        profile.emplace_back(ring % rings == 0 ? 0.0f : radius * static_cast<float>(std::sin(polar)),
                             radius * static_cast<float>(std::cos(polar)));
    }
    return Revolve(profile, segments);
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

void PatchStlFloat(std::string& bytes, size_t facet, size_t slot, float value)
{
    std::memcpy(&bytes.at(84 + 50 * facet + 4 * slot), &value, sizeof value);
}

void WriteBinaryStl(const std::string& path, const TestMesh& mesh)
{
    WriteFile(path, BinaryStl(mesh));
}

} // namespace kelvorig::test
