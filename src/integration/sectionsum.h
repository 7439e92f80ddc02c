// CSectionSum: the pixels of single frames laid into a plane of reciprocal space.
#pragma once

#include "imaging/imgobj.h"
#include "integration/laueoperations.h"
#include "integration/reciprocalsection.h"

#include <array>
#include <vector>

namespace tessera {

/// What one frame, or some frames together, have laid into a section.
struct SectionPart {
    std::vector<float> listSum;  ///< counts times weight; empty where nothing was laid
    std::vector<float> listWeight;
};

/// Lays frames into one section. Threads share one.
class CSectionSum {
public:
    /// @param section        without values
    /// @param listOperation  empty: the plane itself
    /// @param dfTurn         degrees that a frame stands for, not below 0
    CSectionSum(const SeriesGeometry& series, const ReciprocalSection& section,
                const std::vector<IndexOperation>& listOperation, double dfTurn);

    /// @param image  of the size of the series
    /// @param nFrame from 0
    /// @param listMasked  row by row, 1 for what is no measurement
    SectionPart layFrame(const CImgObj<float>& image, int nFrame, const std::vector<char>& listMasked) const;

private:
    using Matrix = std::array<double, 9>;
    /// From a point of the Ewald sphere in the laboratory to its place in the section, right, up and above,
    /// and what that changes by as the crystal turns by a radian.
    struct Form {
        Matrix aPlace, aChange;
    };

    std::vector<Form> formsOf(int nFrame) const;
    bool reaches(const Form& form, const DoubleVector& vecMiddle, double dfRadius) const;
    void layPixel(const Form& form, const DoubleVector& vecSphere, float fValue, SectionPart& part) const;
    void layPoint(double dfRight, double dfUp, float fValue, float fWeight, SectionPart& part) const;

    const SeriesGeometry& m_series;
    std::vector<Matrix> m_listPlane;  ///< from a point of the crystal to right, up and above, by operation
    int m_nSide;
    double m_dfStep, m_dfHeight;
    double m_dfHalfSlab;
    double m_dfHalfTurn;  ///< radians
};

}  // namespace tessera
