// CLearnedProfile: the shape of the spots, learned from strong ones, by region of the frame.
#pragma once

#include <QSize>

#include <vector>

namespace tessera {

/// Density of a spot per pixel², of which the whole is 1, on a grid of thirds of a pixel around its centre.
/// A region is one of nine of the frame; where it has few spots it leans on the mean of all.
/// Source: profiles by region as by Kabsch (1988), J. Appl. Cryst. 21, 916.
class CLearnedProfile {
public:
    /// @param nHalf  whole pixels on either side of the centre
    CLearnedProfile(const QSize& sizeFrame, int nHalf);

    /// One strong spot: a window of (2·nHalf + 1)² pixels without its background.
    /// @param dfX, dfY          its centre, raw pixels
    /// @param nLeft, nTop       the window's first pixel
    void add(double dfX, double dfY, int nLeft, int nTop, const std::vector<float>& listWindow);

    /// Turns sums into densities; add() no more after it.
    /// @param dfSigma  pixels, of the Gaussian that stands in where nothing was learned
    void finish(double dfSigma);

    /// Density at an offset from the centre of a spot, 0 outside the grid.
    double at(int nRegion, double dfX, double dfY) const;
    int regionOf(double dfX, double dfY) const;
    /// Of the mean of all, the part within a radius, pixels.
    double within(double dfRadius) const;
    int half() const { return m_nHalf; }
    int spotCount() const { return m_nSpots; }

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
