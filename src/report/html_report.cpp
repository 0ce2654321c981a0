#include "report/html_report.h"

#include "support/angles.h"

#include "geometry/mesh_loading.h"
#include "geometry/tracked_surface.h"
#include "report/colour_scale.h"
#include "report/coverage_map.h"
#include "report/web_assets.h"

#include <json/writer.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kelvorig {
namespace {

// The sphere of directions needs no finer cells than this, which keeps the page small.
constexpr double kSphereStepDegrees = 2.0;

std::string Base64(const std::string& bytes)
{
    static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3)
    {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t word = 0;
        for (size_t k = 0; k < 3; ++k)
            word = word << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k)
            text += k <= count ? kDigits[word >> (18 - 6 * k) & 63u] : '=';
    }
    return text;
}

std::string EscapeHtml(const std::string& text)
{
    std::string escaped;
    for (char c : text)
    {
        switch (c)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

// Numbers in short form: the page needs no more than a hundredth of a millimetre.
void AppendNumber(std::string& text, double value)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.6g", std::isfinite(value) ? value : 0.0);
    text += buffer;
}

void AppendRgb(std::string& text, const Rgb& colour)
{
    text += '[';
    AppendNumber(text, colour.r);
    text += ',';
    AppendNumber(text, colour.g);
    text += ',';
    AppendNumber(text, colour.b);
    text += ']';
}

// Flat list of facet corners in millimetres, three per facet.
std::string MeshData(const TrackedSurface* surface)
{
    if (surface == nullptr)
        return "[]";
    std::string text = "[";
    const VertexMatrix& vertices = surface->vertices();
    for (Eigen::Index row = 0; row < vertices.rows(); ++row)
    {
        for (Eigen::Index axis = 0; axis < 3; ++axis)
        {
            if (row > 0 || axis > 0)
                text += ',';
            AppendNumber(text, std::round(static_cast<double>(vertices(row, axis)) * 1e5) / 100.0);
        }
    }
    return text + "]";
}

// The facet corners of the meshes at `paths`, read again and scaled as the surface, in
// millimetres, three per facet; an empty list where they can't be read (said where they were used).
std::string CornerData(const std::vector<std::string>& paths, const TrackedSurface* surface)
{
    VertexMatrix vertices;
    TriangleMatrix triangles;
    NormalMatrix normals;
    if (surface == nullptr || paths.empty() || !ReadMeshList(paths, vertices, triangles, normals))
        return "[]";
    std::string text = "[";
    const double toMm = surface->unitScale() * kMillimetresPerMetre;
    for (Eigen::Index row = 0; row < triangles.rows(); ++row)
    {
        for (Eigen::Index corner = 0; corner < 3; ++corner)
        {
            for (Eigen::Index axis = 0; axis < 3; ++axis)
            {
                text += row + corner + axis > 0 ? "," : "";
                AppendNumber(text, std::round(vertices(triangles(row, corner), axis) * toMm * 100.0) / 100.0);
            }
        }
    }
    return text + "]";
}

std::string NormalData(const SensorLayout& layout)
{
    std::string text = "[";
    for (size_t i = 0; i < layout.SensorCount(); ++i)
    {
        text += i > 0 ? ",[" : "[";
        for (int axis = 0; axis < 3; ++axis)
        {
            if (axis > 0)
                text += ',';
            AppendNumber(text, layout.normals[i][axis]);
        }
        text += ']';
    }
    return text + "]";
}

// Every grid index a stride apart, and the last one.
std::vector<size_t> Strided(size_t count, size_t stride)
{
    std::vector<size_t> indices;
    for (size_t i = 0; i < count; i += stride)
        indices.push_back(i);
    if (indices.back() != count - 1)
        indices.push_back(count - 1);
    return indices;
}

// The grid thinned to about kSphereStepDegrees: yaw and pitch of each kept row and column in
// degrees, and the position error in millimetres of each kept direction (yaw outer), -1
// where it is unsolvable.
std::string SphereData(const std::vector<DirectionQuality>& directions)
{
    const std::optional<DirectionGrid> grid = GridOf(directions);
    if (!grid)
        return "null";
    const size_t stride = static_cast<size_t>(std::max(1.0, std::round(kSphereStepDegrees / grid->stepDegrees)));
    const std::vector<size_t> yaws = Strided(grid->yawCount, stride);
    const std::vector<size_t> pitches = Strided(grid->pitchCount, stride);
    std::string text = "{\"yaws\":[";
    for (size_t i = 0; i < yaws.size(); ++i)
    {
        text += i > 0 ? "," : "";
        AppendNumber(text, directions[yaws[i] * grid->pitchCount].yaw * kDegreesPerRadian);
    }
    text += "],\"pitches\":[";
    for (size_t j = 0; j < pitches.size(); ++j)
    {
        text += j > 0 ? "," : "";
        AppendNumber(text, directions[pitches[j]].pitch * kDegreesPerRadian);
    }
    text += "],\"errors\":[";
    for (size_t i = 0; i < yaws.size(); ++i)
    {
        for (size_t j = 0; j < pitches.size(); ++j)
        {
            const DirectionQuality& d = directions[yaws[i] * grid->pitchCount + pitches[j]];
            text += i + j > 0 ? "," : "";
            AppendNumber(text, d.solvablePercent == 0 ? -1.0 : d.positionError * kMillimetresPerMetre);
        }
    }
    return text + "]}";
}

std::string ScaleData()
{
    std::string text = "{\"lowMm\":";
    AppendNumber(text, kMapErrorLowMm);
    text += ",\"highMm\":";
    AppendNumber(text, kMapErrorHighMm);
    text += ",\"unsolvable\":";
    AppendRgb(text, kUnsolvableColour);
    text += ",\"stops\":[";
    for (size_t i = 0; i < kErrorScale.size(); ++i)
    {
        text += i > 0 ? "," : "";
        AppendRgb(text, kErrorScale[i]);
    }
    return text + "]}";
}

// A script element's text must not hold "</": JSON allows "<\/" in its place.
std::string ScriptSafe(const std::string& json)
{
    std::string text;
    for (size_t i = 0; i < json.size(); ++i)
    {
        text += json[i];
        if (json[i] == '<' && i + 1 < json.size() && json[i + 1] == '/')
            text += '\\';
    }
    return text;
}

constexpr const char* kStyle = R"(
body { margin: 0; font-family: sans-serif; font-size: 14px; color: #222; }
#top { display: flex; align-items: flex-start; }
#view { position: relative; width: 800px; height: 560px; background: #f4f4f4; flex: none; }
#tooltip { position: absolute; display: none; pointer-events: none; background: rgba(255,255,255,0.92);
  border: 1px solid #888; padding: 4px 6px; font-size: 13px; white-space: nowrap; }
#side { padding: 0 16px; }
h1 { font-size: 20px; }
table { border-collapse: collapse; margin: 8px 16px 16px 0; }
td, th { border: 1px solid #ccc; padding: 2px 8px; text-align: right; }
th { background: #eee; }
#below { padding: 0 16px; }
#kelvorig-errors { color: #b00; }
#legend { display: flex; align-items: center; gap: 6px; margin: 8px 0; }
#legend .bar { width: 180px; height: 14px; border: 1px solid #888; }
#legend .swatch { width: 14px; height: 14px; border: 1px solid #888; }
)";

} // namespace

std::string HtmlReport(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout,
                       const std::vector<DirectionQuality>& directions, const TrackedSurface* surface,
                       const std::string& mapPng)
{
    Json::FastWriter writer;
    std::string data = "const kelvorigData = {\"summary\":";
    std::string summaryJson = writer.write(SummaryToJson(inputs, summary, layout));
    while (!summaryJson.empty() && summaryJson.back() == '\n')
        summaryJson.pop_back();
    data += ScriptSafe(summaryJson);
    data += ",\"mesh\":" + MeshData(surface);
    data += ",\"obstacles\":" + CornerData(inputs.obstaclePaths, surface);
    data += ",\"keepOuts\":" + CornerData(inputs.run.keepOutPaths, surface);
    data += ",\"normals\":" + NormalData(layout);
    data += ",\"sphere\":" + SphereData(directions);
    data += ",\"scale\":" + ScaleData();
    data += "};\n";

    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>Tracking of " +
                       EscapeHtml(inputs.layoutName) + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n";
    page += "<div id=\"top\"><div id=\"view\"><div id=\"tooltip\"></div></div>\n<div id=\"side\"><h1>Tracking of " +
            EscapeHtml(inputs.layoutName) +
            "</h1>\n<p id=\"kelvorig-status\">loading</p>\n<p id=\"kelvorig-scene\"></p>\n"
            "<div id=\"kelvorig-errors\"></div>\n<div id=\"numbers\"></div></div></div>\n";
    page += "<div id=\"below\"><h2>Map of directions</h2>\n<img id=\"map\" alt=\"map of position error and visible "
            "sensors\" src=\"data:image/png;base64," +
            Base64(mapPng) + "\">\n<div id=\"tables\"></div></div>\n";
    // First, so that it also catches an error in the scripts below it.
    page += "<script>window.onerror = function (message, source, line) { "
            "document.getElementById('kelvorig-errors').textContent += 'script error: ' + message + ' (line ' + line "
            "+ ')\\n'; };</script>\n";
    page += "<script>\n";
    page += ThreeJsSource();
    page += "\n</script>\n<script>\n";
    page += OrbitControlsSource();
    page += "\n</script>\n<script>\n" + data + "</script>\n<script>\n";
    page += ReportPageScript();
    page += "\n</script>\n</body>\n</html>\n";
    return page;
}

} // namespace kelvorig
