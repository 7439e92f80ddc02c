// CLearnedProfile: spot profiles learned from strong reflections, by region of the frame.
#pragma once

#include <QSize>

#include <vector>

namespace tessera {

/// The normalized density of a spot per pixel², on a grid of thirds of a pixel around its centre. The frame
/// is divided into nine regions; the profile of a region with few spots is complemented by the mean profile.
/// Source: profiles by region after Kabsch (1988), J. Appl. Cryst. 21, 916.
class CLearnedProfile {
public:
    /// @param nHalf  pixels of the window on either side of the centre
    CLearnedProfile(const QSize& sizeFrame, int nHalf);

    /// Adds a strong spot: a window of (2·nHalf + 1)² pixels with the background subtracted.
    /// @param dfX, dfY          centre of the spot, raw pixels
    /// @param nLeft, nTop       first pixel of the window
    void add(double dfX, double dfY, int nLeft, int nTop, const std::vector<float>& listWindow);

    /// Turns the sums into densities; add() must not be called afterwards.
    /// @param dfSigma  pixels, sigma of the Gaussian that is used where nothing was learned
    void finish(double dfSigma);

    /// The density at an offset from the centre of a spot, 0 outside the grid.
    double at(int nRegion, double dfX, double dfY) const;
    /// The region of a place on the frame, raw pixels; 0 to 8.
    int regionOf(double dfX, double dfY) const;
    /// The fraction of the mean profile within a radius, pixels.
    double within(double dfRadius) const;
    int half() const { return m_nHalf; }        ///< pixels of the window on either side of the centre
    int spotCount() const { return m_nSpots; }  ///< spots that were added

private:
    struct Grid {
        std::vector<double> listSum, listWeight, listDensity;
        int nSpots = 0;
    };
    void addToGrid(Grid& grid, double dfX, double dfY, double dfValue, double dfWeight) const;
    void normalise(std::vector<double>& listDensity) const;

    QSize m_sizeFrame;
    int m_nHalf;
    int m_nSide;  // of the grid
    int m_nSpots = 0;
    std::vector<Grid> m_listRegion;
    Grid m_all;
};

}  // namespace tessera
