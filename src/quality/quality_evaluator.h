#pragma once

#include "config/sensor_model.h"

#include <cstdint>

namespace kelvorig {

class TrackedSurface;

// The sweep-geometry descriptor: kind 0 (standard) unless /srbtiltdegrees asks for 7.
struct BaseStationModel
{
    int32_t kind = 0;
    double tiltRadians = 0.5;
};

// Reduces a sensor layout to one tracking-quality score over sampled orientations (lower
// is better, 0 to 1000), and writes the analysis reports. Reads the layout by reference, so
// sensors moved in place count at the next evaluation.
class QualityEvaluator
{
public:
    QualityEvaluator();
    ~QualityEvaluator();

    // Each of the three rebuilds the visibility state; SetModel must come first.
    void SetModel(const SensorLayout& model);
    void SetSurface(const TrackedSurface* surface);  // null: no occlusion
    void SetBaseStationModel(const BaseStationModel& baseStation);

    void SampleOrientations(int32_t count);
    void SampleAnalysisPoses(double fullTurn, double step);
    void SetQualityRange(double low, double high);

    double EvaluateQuality();
};

} // namespace kelvorig
