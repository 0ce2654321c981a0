#include "report/colour_scale.h"
#include "report/coverage_map.h"

#include "config/model_file.h"
#include "quality/orientation_sampling.h"
#include "quality/reference_pose_error.h"
#include "support/angles.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <Eigen/Geometry>
#include <cairo.h>
#include <json/reader.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>

namespace kelvorig {
namespace {

using Image = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Json::Value ReadJson(const std::string& path)
{
    Json::Value root;
    EXPECT_TRUE(Json::Reader().parse(test::ReadFile(path), root)) << path;
    return root;
}

Image ReadPng(const std::string& path)
{
    Image image(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
    EXPECT_EQ(cairo_surface_status(image.get()), CAIRO_STATUS_SUCCESS) << path;
    return image;
}

Rgb PixelAt(cairo_surface_t* image, double x, double y)
{
    const unsigned char* row = cairo_image_surface_get_data(image) +
                               static_cast<size_t>(y) * static_cast<size_t>(cairo_image_surface_get_stride(image));
    const uint32_t pixel = reinterpret_cast<const uint32_t*>(row)[static_cast<size_t>(x)];
    return {(pixel >> 16 & 255u) / 255.0, (pixel >> 8 & 255u) / 255.0, (pixel & 255u) / 255.0};
}

void ExpectColour(const Rgb& actual, const Rgb& expected, const char* where)
{
    EXPECT_NEAR(actual.r, expected.r, 0.01) << where;
    EXPECT_NEAR(actual.g, expected.g, 0.01) << where;
    EXPECT_NEAR(actual.b, expected.b, 0.01) << where;
}

// The smallest value whose cumulative weight reaches the fraction, by a plain scan.
double Percentile(std::vector<std::pair<double, double>> values, double fraction)
{
    std::sort(values.begin(), values.end());
    double total = 0.0, sum = 0.0;
    for (const auto& v : values)
        total += v.second;
    for (const auto& v : values)
        if ((sum += v.second) >= fraction * total)
            return v.first;
    return values.back().first;
}

// True when some point lies more than 8.5 mm off the plane of a triangle of three others
// that is itself at least 8.5 mm high: the sensors then fix a pose.
bool IsNonPlanar(const std::vector<Eigen::Vector3d>& p)
{
    for (size_t a = 0; a < p.size(); ++a)
        for (size_t b = a + 1; b < p.size(); ++b)
            for (size_t c = b + 1; c < p.size(); ++c)
            {
                const Eigen::Vector3d normal = (p[b] - p[a]).cross(p[c] - p[a]);
                const double longest = std::max({(p[b] - p[a]).norm(), (p[c] - p[a]).norm(), (p[c] - p[b]).norm()});
                for (size_t d = 0; d < p.size() && normal.norm() / longest >= 0.0085; ++d)
                    if (std::abs(normal.normalized().dot(p[d] - p[a])) > 0.0085)
                        return true;
            }
    return false;
}

// Nine sensors on the +X half of a sphere of 8 cm, facing out; nothing faces -X.
const std::vector<Eigen::Vector3f> kPoints = {{0.08f, 0.0f, 0.0f},     {0.06f, 0.05f, 0.0f},  {0.06f, -0.05f, 0.01f},
                                              {0.05f, 0.01f, 0.06f},   {0.05f, 0.0f, -0.06f}, {0.03f, 0.06f, 0.04f},
                                              {0.03f, -0.06f, -0.04f}, {0.02f, 0.03f, 0.07f}, {0.02f, -0.07f, 0.03f}};

TEST(VisualOutputs, SummaryAndMapAgreeWithAnIndependentComputation)
{
    test::TempDir dir;
    std::string model = R"({"channelMap": [0, 1, 2, 3, 4, 5, 6, 7, 8], "modelPoints": [)";
    for (size_t i = 0; i < kPoints.size(); ++i)
        model += (i ? ",[" : "[") + std::to_string(kPoints[i].x()) + "," + std::to_string(kPoints[i].y()) + "," +
                 std::to_string(kPoints[i].z()) + "]";
    test::WriteFile(dir.File("ring.json"), model + R"(], "modelNormals": )" + model.substr(model.find("[[")) + "]}");
    const std::vector<std::string> run = {"/model",
                                          dir.File("ring.json"),
                                          "/angleresolutiondegrees",
                                          "15",
                                          "/distancebasemeters",
                                          "1.5",
                                          "/maxincidenceangle",
                                          "70"};
    std::vector<std::string> withOutputs = run;
    withOutputs.insert(withOutputs.end(), {"/outsummary", dir.File("s.json"), "/outpng", dir.File("m.png")});
    const test::CliResult plain = test::RunKelvorig(run);
    const test::CliResult result = test::RunKelvorig(withOutputs);
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, plain.out);
    EXPECT_EQ(result.err.rfind(plain.err + "\nsummary of ring: score ", 0), 0u) << result.err;

    // The independent reckoning: the object turned onto each grid direction at 1.5 m, sensors
    // seen within 70 degrees of incidence, the pose error from the reference model.
    SensorLayout layout = test::MakeLayout(kPoints, kPoints);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(70.0));
    std::vector<BaseStationPose> poses;
    SampleGridPoses(6.283185307179586, DegreesToRadians(15.0), poses);
    std::vector<std::pair<double, double>> positions, rotations;
    std::vector<double> seen(kPoints.size(), 0.0), shares(4, 0.0);
    double total = 0.0, wellCoveredMm = 0.0;
    int wellCoveredCount = 0, maxCount = 0;
    for (const BaseStationPose& pose : poses)
    {
        const double weight = std::max(0.0, std::cos(pose.gridPitch));
        test::ReferenceView view = test::ReferenceViewOf(
            layout, test::RotationOntoZ(test::GridDirection(pose.gridYaw, pose.gridPitch)), {0.0, 0.0, -1.5});
        ASSERT_FALSE(view.borderline);
        if (std::isnan(pose.quaternion.w))
            view = {}; // the pole's record is not a number and sees nothing
        for (const int id : view.ids)
            seen[static_cast<size_t>(id)] += weight;
        const std::vector<Eigen::Vector3d>& visible = view.points;
        int solvable = visible.size() < 4 ? 0 : !IsNonPlanar(visible) ? 96 : visible.size() == 4 ? 99 : 100;
        double position = view.PositionError(), rotationError = view.RotationError();
        if (solvable == 0 || !(position <= 1.0 && rotationError <= 1.0))
            solvable = 0, position = rotationError = 1.0;
        shares[solvable == 100 ? 0 : solvable == 99 ? 1 : solvable == 96 ? 2 : 3] += weight;
        total += weight;
        positions.emplace_back(position * 1000.0, weight);
        rotations.emplace_back(rotationError * 57.29577951308232, weight);
        maxCount = std::max(maxCount, static_cast<int>(visible.size()));
        if (std::abs(pose.gridYaw - 1.5707963) < 1e-6 && std::abs(pose.gridPitch) < 1e-6)
            wellCoveredMm = position * 1000.0, wellCoveredCount = static_cast<int>(visible.size());
    }

    const Json::Value summary = ReadJson(dir.File("s.json"));
    const char* const shareKeys[] = {"100", "99", "96", "0"};
    for (int k = 0; k < 4; ++k)
        EXPECT_NEAR(summary["solvable_percent"][shareKeys[k]].asDouble(), 100.0 * shares[k] / total, 1e-9);
    for (const auto& [key, values] : {std::pair{"position_error_mm", positions}, {"rotation_error_degrees", rotations}})
    {
        for (const auto& [name, fraction] : {std::pair{"p50", 0.5}, {"p90", 0.9}, {"p99", 0.99}, {"max", 1.0}})
        {
            const double expected = Percentile(values, fraction);
            EXPECT_NEAR(summary[key][name].asDouble(), expected, 1e-4 * expected) << key << " " << name;
        }
    }
    for (Json::ArrayIndex i = 0; i < kPoints.size(); ++i)
        EXPECT_NEAR(summary["sensors"][i]["seen_percent"].asDouble(), 100.0 * seen[i] / total, 1e-9);
    EXPECT_EQ(summary["inputs"]["sensor_count"].asInt(), 9);
    EXPECT_EQ(summary["worst_directions"].size(), 10u);
    EXPECT_EQ(summary["worst_directions"][0]["position_error_mm"].asDouble(), 1000.0);

    // -X sees no sensor at all; +X sees most of them.
    const Image map = ReadPng(dir.File("m.png"));
    const auto unsolvable = PanelPoint(kErrorPanel, -90.0, 0.0);
    ExpectColour(PixelAt(map.get(), unsolvable[0], unsolvable[1]), kUnsolvableColour, "unsolvable");
    ASSERT_GE(wellCoveredCount, 5);
    const auto covered = PanelPoint(kErrorPanel, 90.0, 0.0);
    ExpectColour(PixelAt(map.get(), covered[0], covered[1]), ErrorColour(wellCoveredMm), "well covered");
    const auto count = PanelPoint(kCountPanel, 90.0, 0.0);
    ExpectColour(PixelAt(map.get(), count[0], count[1]), CountColour(wellCoveredCount, maxCount), "count");
}

// A short generate run on the test box after two immutable sensors, which lead the result under
// new ids. Both files carry the score of the written layout as the anneal scores it (its
// analysis with the same orientations), the drawing holds the JSON in a comment, the files do
// not depend on which others are asked for, a run without a seed notes none, and no other file
// is left behind.
TEST(VisualOutputs, GenerateWritesTheScoreOfItsLayoutAndAReportThatOpensInABrowser)
{
    test::TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)));
    test::WriteFile(dir.File("immutable.json"), R"({"channelMap": [4, 9], "modelPoints": [[0, 0, 0.05],
        [0.05, 0.01, -0.02]], "modelNormals": [[0, 0, 1], [1, 0, 0]]})");
    const std::vector<std::string> common = {"/sensors", dir.File("box.stl"),       "/norientations",
                                             "40",       "/angleresolutiondegrees", "10"};
    const auto generate = [&](std::vector<std::string> more)
    {
        more.insert(more.end(), {"/generate", "/nsensors", "6", "/niterations", "1", "/coolingrate", "0.5", "/model",
                                 dir.File("immutable.json")});
        more.insert(more.end(), common.begin(), common.end());
        return test::RunKelvorig(more);
    };
    ASSERT_EQ(generate({"/outscad", dir.File("drawing.scad")}).status, 0); // no seed, so no note of one
    ASSERT_EQ(generate({"/seed", "3", "/outmodel", dir.File("model.json")}).status, 0);
    const test::CliResult generated =
        generate({"/seed", "3", "/outmodel", dir.File("g.json"), "/outscad", dir.File("g.scad"), "/outsummary",
                  dir.File("gs.json"), "/outhtml", dir.File("g.html"), "/outpng", dir.File("g.svg")});
    ASSERT_EQ(generated.status, 0) << generated.err;
    EXPECT_TRUE(test::WithoutMeshLines(generated.err).starts_with("anneal duration: 68.8821\n"))
        << "no warning expected: " << generated.err;
    EXPECT_FALSE(generated.out.empty());
    std::vector<std::string> analyse = {"/model", dir.File("g.json"), "/outsummary", dir.File("as.json")};
    analyse.insert(analyse.end(), common.begin(), common.end());
    ASSERT_EQ(test::RunKelvorig(analyse).status, 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 10);

    const std::string file = test::ReadFile(dir.File("g.json")), scad = test::ReadFile(dir.File("g.scad"));
    EXPECT_EQ(test::ReadFile(dir.File("model.json")), file);
    const std::vector<std::string> drawing = test::Lines(test::ReadFile(dir.File("drawing.scad")));
    EXPECT_TRUE(drawing.at(0).starts_with("/* Final Quality Score: ") && drawing.at(1) == "/*") << drawing.at(1);
    const double score = ReadJson(dir.File("as.json"))["score"]["value"].asDouble();
    EXPECT_EQ(ReadJson(dir.File("gs.json"))["score"]["value"].asDouble(), score);
    char head[80];
    std::snprintf(head, sizeof head, "Final Quality Score: %g / 1000 (lower is better)", score);
    const std::string json = file.substr(file.find('{'));
    EXPECT_EQ(file, "// " + std::string(head) + "\n// Seed: 3\n" + json);
    EXPECT_TRUE(scad.starts_with("/* " + std::string(head) + " */\n/* Seed: 3 */\n/*\n" +
                                 json.substr(0, json.size() - 1) + "*/\n\n"));
    TrackedObjectModel model;
    ASSERT_TRUE(ReadModel(dir.File("g.json"), model));
    EXPECT_EQ(model.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(std::tie(model.modelPoints[0], model.modelPoints[1], model.modelNormals[1]),
              std::make_tuple(Eigen::Vector3f(0.0f, 0.0f, 0.05f), Eigen::Vector3f(0.05f, 0.01f, -0.02f),
                              Eigen::Vector3f(1.0f, 0.0f, 0.0f)));
    EXPECT_NE(test::ReadFile(dir.File("g.svg")).find("<svg"), std::string::npos);

    if (!std::filesystem::exists("/usr/bin/chromium"))
        GTEST_SKIP() << "no /usr/bin/chromium";
    const std::string browser = "timeout 120 /usr/bin/chromium --headless --no-sandbox --use-angle=swiftshader "
                                "--enable-unsafe-swiftshader --window-size=1280,900 ";
    const std::string page = " file://" + dir.File("g.html") + " 2>/dev/null";
    ASSERT_EQ(std::system((browser + "--dump-dom" + page + " > " + dir.File("dom.html")).c_str()), 0);
    ASSERT_EQ(std::system((browser + "--screenshot=" + dir.File("shot.png") + page + " >/dev/null").c_str()), 0);
    const std::string dom = test::ReadFile(dir.File("dom.html"));
    EXPECT_NE(dom.find(">ready: 12 mesh triangles, 6 sensors, "), std::string::npos) << dom.substr(0, 2000);
    EXPECT_NE(dom.find("<div id=\"kelvorig-errors\"></div>"), std::string::npos);
    EXPECT_NE(dom.find(">scene: device, axes, front marker, sphere of directions; 0 flagged sensors ()<"),
              std::string::npos);

    const Image shot = ReadPng(dir.File("shot.png"));
    std::set<uint32_t> colours;
    for (double y = 5; y < 555; y += 5)
        for (double x = 5; x < 795; x += 5)
        {
            const Rgb c = PixelAt(shot.get(), x, y);
            colours.insert(static_cast<uint32_t>(c.r * 255) << 16 | static_cast<uint32_t>(c.g * 255) << 8 |
                           static_cast<uint32_t>(c.b * 255));
        }
    EXPECT_GT(colours.size(), 20u);
}

} // namespace
} // namespace kelvorig
