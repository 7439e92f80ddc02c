// ReflectionFlags: the defects of an observation, one bit each.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// Why an observation is not a full measurement. Several flags may be set.
enum ReflectionFlag : unsigned {
    FlagSlow = 1u << 0,           ///< crosses the sphere too slowly: close to the rotation axis
    FlagBeginsBefore = 1u << 1,   ///< in reflecting position before the first frame already
    FlagEndsAfter = 1u << 2,      ///< in reflecting position after the last frame still
    FlagOffFrame = 1u << 3,       ///< a part of its disc is outside the frame
    FlagMasked = 1u << 4,         ///< touches a mask, a dead row, a shadow or a gap of the detector
    FlagSaturated = 1u << 5,      ///< has a saturated pixel
    FlagOverlap = 1u << 6,        ///< overlaps with the disc of another reflection
    FlagNearBeam = 1u << 7,       ///< inside the glow of the direct beam
    FlagBlankFrame = 1u << 8,     ///< one of its frames is blank, missing or unreadable
    FlagBadBackground = 1u << 9,  ///< too few pixels for a background, or no plane fits them
    FlagBadProfile = 1u << 10,    ///< its profile differs from the strong reflections of its region
    FlagOutlier = 1u << 11,       ///< rejected as it disagrees with its equivalents
    FlagNotFinite = 1u << 12,     ///< has pixels that are not finite
};

/// Flags that exclude an observation from scaling and merging.
inline constexpr unsigned g_nExcludingFlags = FlagSlow | FlagBeginsBefore | FlagEndsAfter | FlagOffFrame |
                                              FlagMasked | FlagSaturated | FlagOverlap | FlagNearBeam |
                                              FlagBlankFrame | FlagBadBackground | FlagBadProfile |
                                              FlagOutlier | FlagNotFinite;

/// The names of the flags that are set, as used in tables and files: "slow", "begins before".
QStringList reflectionFlagNames(unsigned nFlags);

/// The name of one flag.
QString reflectionFlagName(ReflectionFlag flag);

}  // namespace tessera
