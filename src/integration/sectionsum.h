// CSectionSum: adds the pixels of frames to a section of reciprocal space.
#pragma once

#include "imaging/imgobj.h"
#include "integration/laueoperations.h"
#include "integration/reciprocalsection.h"

#include <array>
#include <vector>

namespace tessera {

/// The contribution of one or more frames to a section.
struct SectionPart {
    std::vector<float> listSum;     ///< counts times weight, for each pixel; empty: no contribution
    std::vector<float> listWeight;  ///< weight of each pixel
};

/// Computes the contributions of frames to one section. Threads may share it.
class CSectionSum {
public:
    /// @param section        geometry of the section; its values are not used
    /// @param listOperation  operations that relate equivalent planes; empty: the plane itself
    /// @param dfTurn         rotation that a frame represents, degrees, at least 0
    CSectionSum(const SeriesGeometry& series, const ReciprocalSection& section,
                const std::vector<IndexOperation>& listOperation, double dfTurn);

    /// The contribution of one frame.
    /// @param image       a frame of the size of the series
    /// @param nFrame      its number, from 0
    /// @param listMasked  row by row, 1 for pixels that are not used
    SectionPart layFrame(const CImgObj<float>& image, int nFrame, const std::vector<char>& listMasked) const;

private:
    using Matrix = std::array<double, 9>;
    /// Transforms a point of the Ewald sphere in the laboratory frame to section coordinates (right, up,
    /// along the normal), and gives their change per radian of rotation.
    struct Form {
        Matrix aPlace, aChange;
    };

    std::vector<Form> formsOf(int nFrame) const;
    bool reaches(const Form& form, const DoubleVector& vecMiddle, double dfRadius) const;
    void layPixel(const Form& form, const DoubleVector& vecSphere, float fValue, SectionPart& part) const;
    void layPoint(double dfRight, double dfUp, float fValue, float fWeight, SectionPart& part) const;

    const SeriesGeometry& m_series;
    std::vector<Matrix> m_listPlane;  ///< for each operation, from crystal to section coordinates
    int m_nSide;
    double m_dfStep, m_dfHeight;
    double m_dfHalfSlab;
    double m_dfHalfTurn;  ///< radians
};

}  // namespace tessera
