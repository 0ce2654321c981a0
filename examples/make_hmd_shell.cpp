// Writes examples/hmd_shell.stl, the bundled example surface: the front shell of a
// head-mounted display in millimetres, 180 wide (x), 110 high (y) and 90 deep (z), facing
// +Z and centred on the origin. It is a closed solid with 3 mm walls: a rounded outer skin,
// an inner skin 3 mm inside it, and a flat rim joining the two at the open back (z = -45).
// Facet normals point out of the solid. Regenerate with:
//   cmake --build build --target make_hmd_shell && build/make_hmd_shell examples/hmd_shell.stl
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Point = std::array<double, 3>;

constexpr double kPi = 3.141592653589793;
constexpr double kHalfWidth = 90.0;
constexpr double kHalfHeight = 55.0;
constexpr double kDepth = 90.0;
constexpr double kBack = -45.0;
constexpr double kWall = 3.0;
// Below 1 these square off the profile (front to back) and the outline (around z).
constexpr double kProfileRoundness = 0.7;
constexpr double kOutlineRoundness = 0.6;
constexpr int kRings = 16;
constexpr int kSegments = 64;

double SignedPower(double value, double exponent)
{
    return std::copysign(std::pow(std::abs(value), exponent), value);
}

// A point of a skin: polar runs from the front pole (0) to the back rim (pi/2), azimuth
// around the z axis. `inset` shrinks the skin into the wall.
Point SkinPoint(double polar, double azimuth, double inset)
{
    const double across = SignedPower(std::sin(polar), kProfileRoundness);
    const double along = SignedPower(std::cos(polar), kProfileRoundness);
    return {(kHalfWidth - inset) * across * SignedPower(std::cos(azimuth), kOutlineRoundness),
            (kHalfHeight - inset) * across * SignedPower(std::sin(azimuth), kOutlineRoundness),
            kBack + (kDepth - inset) * along};
}

struct Mesh
{
    std::vector<Point> points;
    std::vector<std::array<int, 3>> facets;
};

// Grid of one skin: the front pole, then kRings rings of kSegments points.
void AddSkin(Mesh& mesh, double inset, bool outward)
{
    const int pole = static_cast<int>(mesh.points.size());
    mesh.points.push_back(SkinPoint(0.0, 0.0, inset));
    for (int ring = 1; ring <= kRings; ++ring)
    {
        for (int segment = 0; segment < kSegments; ++segment)
            mesh.points.push_back(SkinPoint(0.5 * kPi * ring / kRings, 2.0 * kPi * segment / kSegments, inset));
    }
    auto at = [pole](int ring, int segment) { return pole + 1 + (ring - 1) * kSegments + segment % kSegments; };
    auto add = [&mesh, outward](int a, int b, int c) {
        mesh.facets.push_back(outward ? std::array<int, 3>{a, b, c} : std::array<int, 3>{a, c, b});
    };
    for (int segment = 0; segment < kSegments; ++segment)
    {
        add(pole, at(1, segment), at(1, segment + 1));
        for (int ring = 1; ring < kRings; ++ring)
        {
            add(at(ring, segment), at(ring + 1, segment), at(ring + 1, segment + 1));
            add(at(ring, segment), at(ring + 1, segment + 1), at(ring, segment + 1));
        }
    }
}

Mesh MakeShell()
{
    Mesh mesh;
    AddSkin(mesh, 0.0, true);
    const int outerRim = static_cast<int>(mesh.points.size()) - kSegments;
    AddSkin(mesh, kWall, false);
    const int innerRim = static_cast<int>(mesh.points.size()) - kSegments;
    // The flat back rim between the skins, facing -z.
    for (int segment = 0; segment < kSegments; ++segment)
    {
        const int next = (segment + 1) % kSegments;
        mesh.facets.push_back({outerRim + segment, innerRim + segment, outerRim + next});
        mesh.facets.push_back({outerRim + next, innerRim + segment, innerRim + next});
    }
    return mesh;
}

void AppendWord(std::string& bytes, uint32_t word)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>((word >> shift) & 0xFF));
}

void AppendPoint(std::string& bytes, const Point& p)
{
    for (double value : p)
        AppendWord(bytes, std::bit_cast<uint32_t>(static_cast<float>(value)));
}

Point FacetNormal(const Mesh& mesh, const std::array<int, 3>& facet)
{
    const Point& a = mesh.points[facet[0]];
    const Point& b = mesh.points[facet[1]];
    const Point& c = mesh.points[facet[2]];
    const Point e1{b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    const Point e2{c[0] - a[0], c[1] - a[1], c[2] - a[2]};
    const Point n{e1[1] * e2[2] - e1[2] * e2[1], e1[2] * e2[0] - e1[0] * e2[2], e1[0] * e2[1] - e1[1] * e2[0]};
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    return {n[0] / length, n[1] / length, n[2] / length};
}

std::string BinaryStl(const Mesh& mesh)
{
    const std::string title = "kelvorig example: HMD front shell, mm";
    std::string bytes = title + std::string(80 - title.size(), ' ');
    AppendWord(bytes, static_cast<uint32_t>(mesh.facets.size()));
    for (const std::array<int, 3>& facet : mesh.facets)
    {
        AppendPoint(bytes, FacetNormal(mesh, facet));
        for (int corner : facet)
            AppendPoint(bytes, mesh.points[corner]);
        bytes.append(2, '\0');
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: make_hmd_shell <output.stl>\n");
        return 1;
    }
    const Mesh mesh = MakeShell();
    std::ofstream out(argv[1], std::ios::binary | std::ios::trunc);
    out << BinaryStl(mesh);
    if (!out)
    {
        std::fprintf(stderr, "could not write %s\n", argv[1]);
        return 1;
    }
    std::printf("%zu facets written to %s\n", mesh.facets.size(), argv[1]);
    return 0;
}
