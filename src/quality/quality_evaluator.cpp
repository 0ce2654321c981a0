#include "quality/quality_evaluator.h"

namespace kelvorig {

// Placeholder until the quality code lands.
QualityEvaluator::QualityEvaluator() = default;
QualityEvaluator::~QualityEvaluator() = default;
void QualityEvaluator::SetModel(const SensorLayout&) {}
void QualityEvaluator::SetSurface(const TrackedSurface*) {}
void QualityEvaluator::SetBaseStationModel(const BaseStationModel&) {}
void QualityEvaluator::SampleOrientations(int32_t) {}
void QualityEvaluator::SampleAnalysisPoses(double, double) {}
void QualityEvaluator::SetQualityRange(double, double) {}
double QualityEvaluator::EvaluateQuality() { return 0.0; }

} // namespace kelvorig
