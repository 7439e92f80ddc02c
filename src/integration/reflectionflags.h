// ReflectionFlags: what is wrong with an observation, bit by bit.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// Why an observation is not, or not fully, a measurement. Several may hold at once.
enum ReflectionFlag : unsigned {
    FlagSlow = 1u << 0,           ///< crosses the sphere too slowly: close to the rotation axis
    FlagBeginsBefore = 1u << 1,   ///< was in reflecting position before the first frame
    FlagEndsAfter = 1u << 2,      ///< is so still after the last one
    FlagOffFrame = 1u << 3,       ///< a part of its disc lies off the frame
    FlagMasked = 1u << 4,         ///< runs through a mask, a dead row, a shadow or a gap of the detector
    FlagSaturated = 1u << 5,      ///< a pixel is at the top of what the detector counts
    FlagOverlap = 1u << 6,        ///< the disc of another reflection reaches into it
    FlagNearBeam = 1u << 7,       ///< inside the glow of the direct beam
    FlagBlankFrame = 1u << 8,     ///< a frame of it is blank, missing or could not be read
    FlagBadBackground = 1u << 9,  ///< too few pixels for a background, or no plane fits them
    FlagBadProfile = 1u << 10,    ///< does not look like the strong reflections of its region
    FlagOutlier = 1u << 11,       ///< rejected against its equivalents
    FlagNotFinite = 1u << 12,     ///< its pixels give no number
};

/// Those with which an observation takes no part in scaling and merging.
inline constexpr unsigned g_nExcludingFlags = FlagSlow | FlagBeginsBefore | FlagEndsAfter | FlagOffFrame |
                                              FlagMasked | FlagSaturated | FlagOverlap | FlagNearBeam |
                                              FlagBlankFrame | FlagBadBackground | FlagBadProfile |
                                              FlagOutlier | FlagNotFinite;

/// The names of the flags that are set, as tables and files tell them: "slow", "begins before".
QStringList reflectionFlagNames(unsigned nFlags);

/// The name of one flag.
QString reflectionFlagName(ReflectionFlag flag);

}  // namespace tessera
