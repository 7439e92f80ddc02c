// CNearestPeak: the nearest of a set of places on the frame, within a distance.
#pragma once

#include <vector>

namespace tessera {

/// Finds what a walk over all places would find: the place of the smallest squared distance, the first of
/// equals, if its distance is strictly below the limit.
///
/// The places are held in order of x, and only a strip of the limit's width is looked at. The difference in
/// x is rounded monotonously, so the strip loses nothing, however far the places spread.
class CNearestPeak {
public:
    /// @param dfMaxDistance  pixels, or whatever the places are in
    explicit CNearestPeak(double dfMaxDistance) : m_dfMaxDistance(dfMaxDistance) {}

    void clear() { m_vecPlace.clear(); }  ///< forgets all places
    /// Adds a place under its number; a place that is not a number is never found.
    void add(double dfX, double dfY, int nNumber);
    /// To be called after the last add().
    void prepare();
    /// The number of the nearest place, −1 if none is near enough.
    int find(double dfX, double dfY) const;

private:
    struct Place {
        double dfX;
        double dfY;
        int nNumber;
    };
    double m_dfMaxDistance;
    std::vector<Place> m_vecPlace;
};

}  // namespace tessera
