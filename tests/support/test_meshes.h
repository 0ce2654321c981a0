#pragma once

#include <Eigen/Core>

#include <array>
#include <string>
#include <vector>

namespace kelvorig::test {

// A small triangle mesh built in code. Facets wind counter-clockwise seen from outside, so
// the normal of each (from its winding) points out of the solid.
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
// A closed solid of revolution about +Z: the profile (r, z), clockwise so that the winding
// faces outwards, swept round in `steps`; facets on the axis are left out.
TestMesh Revolve(const std::vector<Eigen::Vector2f>& profile, int steps = 48);
// A sphere about the origin: its profile `rings` steps from pole to pole, swept in `segments`.
TestMesh MakeSphere(float radius, int rings, int segments);
// Both meshes in one, `second` behind `first`.
TestMesh Combine(const TestMesh& first, const TestMesh& second);

// A 10 cm cube centred on the origin with a wide slab standing 3 cm off its +X face and a
// post on its top: sensors are hidden behind them at some poses, and a sensor on the +X face
// looking along +X (kUnderTheSlab) is never seen at an incidence limit of 60 degrees.
TestMesh MakeOccludedCube();
inline const Eigen::Vector3f kUnderTheSlab(0.05f, 0.01f, -0.02f);
inline const Eigen::Vector3f kUnderTheSlabNormal(1.0f, 0.0f, 0.0f);

// Binary STL bytes (80-byte header, count, 50 bytes per facet with its winding normal), and
// text STL starting with "solid <name>".
std::string BinaryStl(const TestMesh& mesh);
std::string TextStl(const TestMesh& mesh, const std::string& name = "test");
void WriteBinaryStl(const std::string& path, const TestMesh& mesh);
// Overwrites one float of binary STL bytes: facet, place in it (0-2 normal, 3-11 corners), value.
void PatchStlFloat(std::string& bytes, size_t facet, size_t slot, float value);

} // namespace kelvorig::test
