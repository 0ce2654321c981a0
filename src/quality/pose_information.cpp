#include "quality/pose_information.h"

namespace kelvorig {
namespace {

// Stands in for a sensor that is not there.
constexpr SensorRows kNoRows = {};

} // namespace

void PoseInformation::Add(const SensorRows& rows)
{
    Update(*this, nullptr, &rows);
}

void PoseInformation::Update(const PoseInformation& from, const SensorRows* removed, const SensorRows* added)
{
    // One pass, first angles in the first six partials and second angles in the last six.
    const double* r = removed != nullptr ? removed->data() : kNoRows.data();
    const double* a = added != nullptr ? added->data() : kNoRows.data();
    int k = 0;
    for (int i = 0; i < 6; ++i)
    {
        for (int j = i; j < 6; ++j, ++k)
            gram[k] = from.gram[k] - (r[i] * r[j] + r[6 + i] * r[6 + j]) + (a[i] * a[j] + a[6 + i] * a[6 + j]);
        firstSum[i] = from.firstSum[i] - r[i] + a[i];
        secondSum[i] = from.secondSum[i] - r[6 + i] + a[6 + i];
    }
}

Matrix6d PoseInformation::Information(double ownWeight, double sharedWeight) const
{
    Matrix6d information;
    int k = 0;
    for (int i = 0; i < 6; ++i)
    {
        for (int j = i; j < 6; ++j)
        {
            const double shared = firstSum[i] * firstSum[j] + secondSum[i] * secondSum[j];
            information(i, j) = ownWeight * gram[k++] + sharedWeight * shared;
            information(j, i) = information(i, j);
        }
    }
    return information;
}

} // namespace kelvorig
