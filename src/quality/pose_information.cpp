#include "quality/pose_information.h"

namespace kelvorig {
namespace {

// Adds sign·(aaᵀ + bbᵀ) to the packed triangle and sign·a, sign·b to the sums.
void Accumulate(PoseInformation& totals, const SensorRows& rows, double sign)
{
    const double* a = rows.data();
    const double* b = rows.data() + 6;
    int k = 0;
    for (int i = 0; i < 6; ++i)
    {
        for (int j = i; j < 6; ++j)
            totals.gram[k++] += sign * (a[i] * a[j] + b[i] * b[j]);
        totals.firstSum[i] += sign * a[i];
        totals.secondSum[i] += sign * b[i];
    }
}

} // namespace

void PoseInformation::Add(const SensorRows& rows)
{
    Accumulate(*this, rows, 1.0);
}

void PoseInformation::Update(const PoseInformation& from, const SensorRows* removed, const SensorRows* added)
{
    *this = from;
    if (removed != nullptr)
        Accumulate(*this, *removed, -1.0);
    if (added != nullptr)
        Accumulate(*this, *added, 1.0);
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
