#pragma once

#include <Eigen/Core>

#include <array>
#include <string>
#include <vector>

namespace kelvorig::test {

// A small triangle mesh built in code. Facets wind counter-clockwise seen from outside,
// so the normal of each (from its winding) points out of the solid.
struct TestMesh
{
    std::vector<Eigen::Vector3f> vertices;
    std::vector<std::array<int, 3>> triangles;

    // Unit normal of facet t from its winding; zero for a degenerate facet.
    Eigen::Vector3f FacetNormal(size_t t) const;
};

// Axis-aligned box of the given size, centred on `centre`: 12 facets.
TestMesh MakeBox(const Eigen::Vector3f& size, const Eigen::Vector3f& centre = Eigen::Vector3f::Zero());
// Square plate in the x-y plane, `width` across, `thickness` high, its top face at z = 0.
TestMesh MakePlate(float width, float thickness);
// Tetrahedron with corners at the origin and at `edge` along each axis.
TestMesh MakeTetrahedron(float edge);
// Latitude-longitude sphere: rings by segments facets, poles as fans.
TestMesh MakeSphere(float radius, int rings, int segments, const Eigen::Vector3f& centre = Eigen::Vector3f::Zero());

// Both meshes in one, `second` behind `first`.
TestMesh Combine(const TestMesh& first, const TestMesh& second);
// Every vertex multiplied by `factor`.
TestMesh Scaled(const TestMesh& mesh, float factor);

// Binary STL bytes: 80-byte header, count, 50 bytes per facet with its winding normal.
std::string BinaryStl(const TestMesh& mesh);
// Text STL starting with "solid <name>", normals from the winding.
std::string TextStl(const TestMesh& mesh, const std::string& name = "test");

void WriteBinaryStl(const std::string& path, const TestMesh& mesh);
void WriteTextStl(const std::string& path, const TestMesh& mesh);

} // namespace kelvorig::test
