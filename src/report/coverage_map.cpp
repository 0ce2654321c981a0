#include "report/coverage_map.h"

#include "report/colour_scale.h"
#include "support/angles.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace kelvorig {
namespace {

constexpr double kFontSize = 13.0;

struct SurfaceCloser
{
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextCloser
{
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using SurfacePointer = std::unique_ptr<cairo_surface_t, SurfaceCloser>;
using ContextPointer = std::unique_ptr<cairo_t, ContextCloser>;

cairo_status_t AppendBytes(void* closure, const unsigned char* data, unsigned int length)
{
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

void SetColour(cairo_t* cr, const Rgb& colour)
{
    cairo_set_source_rgb(cr, colour.r, colour.g, colour.b);
}

// Text with its anchor at (x, y): `align` 0 left, 0.5 centre, 1 right; the baseline sits
// half the cap height below y, so that y is the text's middle.
void Label(cairo_t* cr, double x, double y, const std::string& text, double align = 0.0)
{
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text.c_str(), &extents);
    cairo_move_to(cr, x - align * extents.x_advance, y + 0.35 * kFontSize);
    cairo_show_text(cr, text.c_str());
}

std::string Number(const char* format, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

uint32_t Pixel(const Rgb& colour)
{
    const auto channel = [](double value)
    { return static_cast<uint32_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0)); };
    return 0xff000000u | channel(colour.r) << 16 | channel(colour.g) << 8 | channel(colour.b);
}

// One pixel per direction, top row the highest pitch, painted over the panel with nearest
// sampling so that every direction stays a sharp cell. Cells are centred on their grid values,
// so the grid leaves two strips bare: the last column's cells stop short of yaw 180, where the
// first column's (yaw -180) continue, and the top row stops short of the pole, which is its
// nearest row. The image gets a copy of the top row above it and is painted a second time a
// full turn to the right, underneath.
template <typename ColourOf>
void PaintCells(cairo_t* cr, const MapPanel& panel, const std::vector<DirectionQuality>& directions,
                const DirectionGrid& grid, const ColourOf& colourOf)
{
    SurfacePointer cells(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(grid.yawCount),
                                                    static_cast<int>(grid.pitchCount + 1)));
    cairo_surface_flush(cells.get());
    unsigned char* data = cairo_image_surface_get_data(cells.get());
    const size_t stride = static_cast<size_t>(cairo_image_surface_get_stride(cells.get()));
    if (data == nullptr)
        return;
    for (size_t k = 0; k < directions.size(); ++k)
    {
        const size_t column = k / grid.pitchCount;
        const size_t row = grid.pitchCount - k % grid.pitchCount;
        const uint32_t pixel = Pixel(colourOf(directions[k]));
        reinterpret_cast<uint32_t*>(data + row * stride)[column] = pixel;
        if (row == 1)
            reinterpret_cast<uint32_t*>(data)[column] = pixel;
    }
    cairo_surface_mark_dirty(cells.get());

    cairo_save(cr);
    cairo_rectangle(cr, panel.left, panel.top, panel.width, panel.height);
    cairo_clip(cr);
    for (const double turn : {360.0, 0.0}) // where the two overlap, the nearer cells paint last
    {
        const std::array<double, 2> corner =
            PanelPoint(panel, grid.firstYawDegrees - 0.5 * grid.stepDegrees + turn,
                       grid.firstPitchDegrees + (static_cast<double>(grid.pitchCount) + 0.5) * grid.stepDegrees);
        cairo_save(cr);
        cairo_translate(cr, corner[0], corner[1]);
        cairo_scale(cr, grid.stepDegrees * panel.width / 360.0, grid.stepDegrees * panel.height / 180.0);
        cairo_set_source_surface(cr, cells.get(), 0.0, 0.0);
        cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
        cairo_paint(cr);
        cairo_restore(cr);
    }
    cairo_restore(cr);
}

void DrawAxes(cairo_t* cr, const MapPanel& panel, const std::string& title)
{
    cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
    cairo_set_line_width(cr, 1.0);
    cairo_rectangle(cr, panel.left, panel.top, panel.width, panel.height);
    cairo_stroke(cr);
    for (int yaw = -180; yaw <= 180; yaw += 45)
    {
        const std::array<double, 2> at = PanelPoint(panel, yaw, -90.0);
        cairo_move_to(cr, at[0], at[1]);
        cairo_line_to(cr, at[0], at[1] + 5.0);
        cairo_stroke(cr);
        Label(cr, at[0], at[1] + 14.0, std::to_string(yaw), 0.5);
    }
    for (int pitch = -90; pitch <= 90; pitch += 30)
    {
        const std::array<double, 2> at = PanelPoint(panel, -180.0, pitch);
        cairo_move_to(cr, at[0], at[1]);
        cairo_line_to(cr, at[0] - 5.0, at[1]);
        cairo_stroke(cr);
        Label(cr, at[0] - 8.0, at[1], std::to_string(pitch), 1.0);
    }
    Label(cr, panel.left + 0.5 * panel.width, panel.top + panel.height + 32.0,
          "yaw (degrees about the mesh's +Y; 0 looks from +Z, 90 from +X)", 0.5);
    cairo_save(cr);
    cairo_translate(cr, panel.left - 52.0, panel.top + 0.5 * panel.height);
    cairo_rotate(cr, -0.5 * kPi);
    Label(cr, 0.0, 0.0, "pitch (degrees; 90 looks down from +Y)", 0.5);
    cairo_restore(cr);
    Label(cr, panel.left, panel.top - 12.0, title);
}

// A bar of the logarithmic error scale beside the panel, and a swatch for unsolvable.
void DrawErrorBar(cairo_t* cr, const MapPanel& panel)
{
    const double left = panel.left + panel.width + 20.0;
    const double top = panel.top;
    const double height = panel.height - 50.0;
    constexpr int kSteps = 200;
    const double low = std::log10(kMapErrorLowMm);
    const double high = std::log10(kMapErrorHighMm);
    for (int i = 0; i < kSteps; ++i)
    {
        const double t = (i + 0.5) / kSteps;
        SetColour(cr, ErrorColour(std::pow(10.0, low + t * (high - low))));
        cairo_rectangle(cr, left, top + height * (1.0 - static_cast<double>(i + 1) / kSteps), 20.0,
                        height / kSteps + 0.5);
        cairo_fill(cr);
    }
    cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
    cairo_rectangle(cr, left, top, 20.0, height);
    cairo_stroke(cr);
    for (double mm = kMapErrorLowMm; mm <= kMapErrorHighMm * 1.001; mm *= 10.0)
    {
        const double y = top + height * (1.0 - (std::log10(mm) - low) / (high - low));
        cairo_move_to(cr, left + 20.0, y);
        cairo_line_to(cr, left + 25.0, y);
        cairo_stroke(cr);
        Label(cr, left + 28.0, y, Number("%g", mm) + (mm >= kMapErrorHighMm ? "+" : ""));
    }
    Label(cr, left, top + height + 18.0, "mm");
    SetColour(cr, kUnsolvableColour);
    cairo_rectangle(cr, left, top + height + 30.0, 20.0, 14.0);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
    Label(cr, left + 26.0, top + height + 37.0, "unsolvable");
}

void DrawCountLegend(cairo_t* cr, const MapPanel& panel, int32_t maxCount)
{
    const double left = panel.left + panel.width + 20.0;
    const double box = std::min(20.0, panel.height / (maxCount + 1));
    for (int32_t count = 0; count <= maxCount; ++count)
    {
        const double top = panel.top + panel.height - box * (count + 1);
        SetColour(cr, CountColour(count, maxCount));
        cairo_rectangle(cr, left, top, 20.0, box);
        cairo_fill(cr);
        cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
        if (box >= 12.0 || count % 2 == 0 || count == maxCount)
            Label(cr, left + 28.0, top + 0.5 * box, std::to_string(count));
    }
    cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);
    cairo_rectangle(cr, left, panel.top + panel.height - box * (maxCount + 1), 20.0, box * (maxCount + 1));
    cairo_stroke(cr);
}

void DrawMap(cairo_t* cr, const std::vector<DirectionQuality>& directions, const DirectionGrid& grid,
             const CoverageSummary& summary, const std::string& layoutName)
{
    cairo_set_source_rgb(cr, 1.0, 1.0, 1.0);
    cairo_paint(cr);
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, kFontSize);
    cairo_set_source_rgb(cr, 0.0, 0.0, 0.0);

    cairo_set_font_size(cr, 1.4 * kFontSize);
    Label(cr, kErrorPanel.left, 24.0, "Tracking of " + layoutName);
    cairo_set_font_size(cr, kFontSize);
    Label(cr, kErrorPanel.left, 52.0,
          "score " + Number("%.6g", summary.score) + " / 1000 (lower is better), solvable from " +
              Number("%.1f", 100.0 - summary.solvableShares[3]) + " % of directions");
    Label(cr, kErrorPanel.left, 70.0,
          "position error median " + Number("%.4g", summary.positionMm.p50) + " mm, 90 % " +
              Number("%.4g", summary.positionMm.p90) + " mm; rotation error median " +
              Number("%.4g", summary.rotationDegrees.p50) + "°, 90 % " + Number("%.4g", summary.rotationDegrees.p90) +
              "°");

    PaintCells(cr, kErrorPanel, directions, grid,
               [](const DirectionQuality& d) {
                   return d.solvablePercent == 0 ? kUnsolvableColour
                                                 : ErrorColour(d.positionError * kMillimetresPerMetre);
               });
    int32_t maxCount = 1;
    for (const DirectionQuality& d : directions)
        maxCount = std::max(maxCount, d.visibleCount);
    PaintCells(cr, kCountPanel, directions, grid,
               [maxCount](const DirectionQuality& d) { return CountColour(d.visibleCount, maxCount); });

    DrawAxes(cr, kErrorPanel, "Position error, logarithmic scale (direction of the base station seen from the device)");
    DrawErrorBar(cr, kErrorPanel);
    DrawAxes(cr, kCountPanel, "Visible sensors");
    DrawCountLegend(cr, kCountPanel, maxCount);
}

} // namespace

std::array<double, 2> PanelPoint(const MapPanel& panel, double yawDegrees, double pitchDegrees)
{
    return {panel.left + (yawDegrees + 180.0) / 360.0 * panel.width,
            panel.top + (90.0 - pitchDegrees) / 180.0 * panel.height};
}

Status DrawCoverageMap(const std::vector<DirectionQuality>& directions, const CoverageSummary& summary,
                       const std::string& layoutName, MapFormat format, std::string& bytes)
{
    bytes.clear();
    const std::optional<DirectionGrid> grid = GridOf(directions);
    if (!grid)
        return Status::Failure("cannot draw the map: the analysis grid has too few directions\n");
    SurfacePointer surface(format == MapFormat::kSvg
                               ? cairo_svg_surface_create_for_stream(AppendBytes, &bytes, kMapWidth, kMapHeight)
                               : cairo_image_surface_create(CAIRO_FORMAT_RGB24, kMapWidth, kMapHeight));
    {
        ContextPointer context(cairo_create(surface.get()));
        DrawMap(context.get(), directions, *grid, summary, layoutName);
        cairo_status_t status = cairo_status(context.get());
        // The SVG text reaches the stream only when its surface is finished; an image surface
        // must stay unfinished for the PNG writer.
        if (status == CAIRO_STATUS_SUCCESS && format == MapFormat::kSvg)
        {
            cairo_surface_finish(surface.get());
            status = cairo_surface_status(surface.get());
        }
        if (status == CAIRO_STATUS_SUCCESS && format == MapFormat::kPng)
            status = cairo_surface_write_to_png_stream(surface.get(), AppendBytes, &bytes);
        if (status != CAIRO_STATUS_SUCCESS)
            return Status::Failure(std::string("cannot draw the map: ") + cairo_status_to_string(status) + "\n");
    }
    return {};
}

} // namespace kelvorig
