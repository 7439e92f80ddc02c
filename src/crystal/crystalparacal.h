// CCrystalParaCal: d* of a reflection and the volume from the direct cell, in double precision.
#pragma once

#include "records/cellparameters.h"

namespace tessera {

/// Source: International Tables for Crystallography, Vol. B, section 1.1.2 (metric of the dual basis).
class CCrystalParaCal {
public:
    /// Without a cell; setUnitCell() gives one.
    CCrystalParaCal() = default;
    /// With a cell in Å and degrees.
    explicit CCrystalParaCal(const CellParameters& cell)
    {
        setUnitCell(cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma);
    }
    virtual ~CCrystalParaCal() = default;

    /// a, b, c in Å, angles in degrees.
    void setUnitCell(double a, double b, double c, double alpha, double beta, double gamma);
    /// Å³; not a number for angles that close no cell.
    double getVolume() const { return m_dfVolume; }
    /// Length of the reciprocal vector (h, k, l), Å⁻¹.
    double calDStar(int h, int k, int l) const;

    double m_dfS11 = 0;  ///< (b·c·sin α)²
    double m_dfS12 = 0;  ///< (cos β·cos α − cos γ)·a·b·c²
    double m_dfS22 = 0;  ///< (a·c·sin β)²
    double m_dfS23 = 0;  ///< (cos γ·cos β − cos α)·a²·b·c
    double m_dfS33 = 0;  ///< (a·b·sin γ)²
    double m_dfS13 = 0;  ///< (cos γ·cos α − cos β)·a·b²·c
    double m_dfVolume = 0;
    double m_dfA = 0;  ///< Å
    double m_dfB = 0;
    double m_dfC = 0;
    double m_dfAlpha = 0;  ///< degrees
    double m_dfBeta = 0;
    double m_dfGamma = 0;
};

}  // namespace tessera
