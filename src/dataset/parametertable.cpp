#include "dataset/parametertable.h"

#include "crystal/spacegrouptable.h"

#include <algorithm>
#include <climits>
#include <stdexcept>

namespace tessera {

namespace {

template <typename TNumber, typename TRecord>
TRecord* recordOf(const ParameterRecords& records, TNumber TRecord::* /*pMember*/)
{
    return std::get<TRecord*>(records);
}

template <typename TNumber, typename TRecord>
double startOf(TNumber TRecord::*pMember)
{
    static const TRecord record{};
    return record.*pMember;
}

void put(double& dfTarget, double dfValue)
{
    dfTarget = dfValue;
}

void put(int& nTarget, double dfValue)
{
    nTarget = int(qBound(double(INT_MIN), dfValue, double(INT_MAX)));
}

using Data = DataSet;
using Hunt = PeakHuntingParameters;
using Mapping = MappingParameters;
using Merge = PeakMergingParameters;
using Cell = CellHuntingParameters;
using Index = IndexingParameters;
using Extract = ExtractionParameters;
using Refine = RefinementParameters;
using Lens = SeriesDistortion;

constexpr OptionValues g_orAuto = OptionValues::OfPageOrAuto;

// Each row: member, box (minimum, maximum, decimals, step, suffix), tip, option, key in the settings.
const std::vector<Parameter> g_listParameter = {
    // Page "Frames"
    {&Data::m_dfWavelength,
     {0, 10000, 6, 0.0005, " Å"},
     "Wavelength of the electrons, Å: 0.0251 at 200 kV, 0.0197 at 300 kV. It determines the curvature of the "
     "Ewald sphere: if it is wrong, rows of points bend at high d*.",
     {"wavelength", "Å", "electron wavelength; from the project", OptionValues::AboveZero}},
    {&Data::m_dfPixelSize,
     {0, 10000, 6, 0.00005, " Å⁻¹"},
     "Size of a pixel of the frame in reciprocal space, Å⁻¹. A wrong one scales all lengths of the cell by "
     "the same factor; angles and indexing hardly suffer. Cell too large: raise it.",
     {"pixel-size", "Å⁻¹", "size of a pixel in reciprocal space; from the project", OptionValues::AboveZero}},
    {&Data::m_dfRotationAxis,
     {-180, 180, 1, 0.1, "°"},
     "Azimuth of the rotation axis on the frame, degrees counter-clockwise from the right (3 o'clock). More "
     "than a degree or two off bends the lattice: turn it until the circles of \"Show Estimated Peak "
     "Position\" lie on the peaks. If nothing fits, try the opposite direction (add 180°), which is the "
     "other sense of rotation. A good fit does not prove the sense: at moderate d* the other one gives the "
     "same cell but the mirror image, the wrong hand. Know it from the instrument or from a known crystal, "
     "or compare both senses as far out in d* as the data go and by \"Refine Basis Vectors\".",
     {"axis", "degrees",
      "azimuth of the rotation axis, counter-clockwise from 3 o'clock; auto finds it, and the sense of the "
      "rotation, from the peaks; default as-given, from the project, or auto where that names none",
      OptionValues::AnyNumberOrAuto}},
    {&Data::m_dfTiltRelaxation,
     {-180, 180, 1, 1, "°"},
     "Extra tilt, degrees, spread evenly over the series, for a stage that lags behind its nominal tilt. Try "
     "steps of a few tenths if the lattice is sheared near the ends of the series, and judge by the share "
     "indexed.",
     {"tilt-relaxation", "degrees", "extra tilt spread over the series; default %1"}},

    // Page "3D Peak Merging": the distortion of the pattern
    {&Data::m_dfStretchAmplitude,
     {-1000, 1000, 2, 0.1, " %"},
     "Size of the distortion, per cent. If circles are still ellipses or rows bend, change it in steps of "
     "0.1.",
     {"stretch-amplitude", "%", "elliptical distortion; from the project"}},
    {&Data::m_dfStretchAzimuth,
     {0, 180, 2, 0.1, " °"},
     "Azimuth of the distortion, degrees: that of the project file plus 90. If the distortion grows, it is "
     "90° off.",
     {"stretch-azimuth", "degrees", "its azimuth as the page shows it; from the project"}},

    {&Lens::dfEllipseAmplitude,
     {-100, 100, 4, 0.1, " %"},
     "Linear ellipse of the lens, per cent: the pattern is longer by this amount along the azimuth and "
     "shorter across it. "
     "Unlike the stretching it also moves points along the circle, as a real lens does.",
     {"ellipse-amplitude", "%", "linear ellipse of the lens; from the project"}},
    {&Lens::dfEllipseAzimuth,
     {0, 180, 3, 0.1, " °"},
     "Azimuth along which the pattern is longer, degrees counter-clockwise from the right.",
     {"ellipse-azimuth", "degrees", "azimuth along which the pattern is longer; from the project"}},
    {&Lens::dfThirdOrderRadial,
     {-100, 100, 4, 0.1, " %"},
     "Third order along the radius, per cent at the radius below: above 0 a barrel, below 0 a pincushion.",
     {"third-order-radial", "%", "barrel at the reference radius, below 0 pincushion; from the project"}},
    {&Lens::dfThirdOrderSpiral,
     {-100, 100, 4, 0.1, " %"},
     "Third order along the circle, per cent at the radius below: above 0 the pattern is turned "
     "counter-clockwise, the more the further out.",
     {"third-order-spiral", "%", "spiral at the reference radius; from the project"}},
    {&Lens::dfParabolicAmplitude,
     {-100, 100, 4, 0.1, " %"},
     "Second order along the radius, per cent at the radius below: longer to one side, shorter to the other.",
     {"parabolic-amplitude", "%", "second order at the reference radius; from the project"}},
    {&Lens::dfParabolicAzimuth,
     {-180, 180, 3, 0.1, " °"},
     "Azimuth of the side to which the pattern is longer, degrees counter-clockwise from the right.",
     {"parabolic-azimuth", "degrees", "side to which the pattern is longer; from the project"}},
    {&Lens::dfRadius,
     {0.01, 100000, 2, 1, " pix."},
     "Reference radius of second and third order: distance from the direct beam at which their per cent "
     "apply, pixels.",
     {"third-order-radius", "pixels", "reference radius of second and third order; from the project"}},
    {&Lens::dfAxisOutOfPlane,
     {-45, 45, 4, 0.01, "°"},
     "Angle between the rotation axis and the plane of the frame, degrees, above 0 along the beam.",
     {"axis-out-of-plane", "degrees",
      "angle of the rotation axis out of the plane of the frame; from the project"}},

    // Page "Shift Evaluation"
    {&Data::m_dfCenterX,
     {0, 100000, 2, 1, ""},
     "Column of the direct beam on the first frame, pixels from the left. Type it in if a beam stop hides "
     "the beam.",
     {"center-x", "pixels", "direct beam on the first frame; from the shift evaluation"}},
    {&Data::m_dfCenterY,
     {0, 100000, 2, 1, ""},
     "Row of the direct beam on the first frame, pixels from the top. Type it in if a beam stop hides the "
     "beam.",
     {"center-y", "pixels", "likewise"}},

    // Page "Peak Search"
    {&Hunt::m_dfPeakRadius,
     {0, 1000, 2, 0.5, " pix."},
     "Sigma of the narrow Gaussian that smooths the frame, pixels: about that of a spot. Lower both radii if "
     "close or weak spots are missed or run together.",
     {"peak-radius", "pixels",
      "sigma of the narrow Gaussian; default auto, that of the spots; with --window-defaults %1", g_orAuto},
     "PeakSearch/PeakRadius"},
    {&Hunt::m_dfBackgroundRadius,
     {0, 1000, 2, 0.5, " pix."},
     "Sigma of the wide Gaussian, pixels; what is broader counts as background. About twice the peak radius.",
     {"background-radius", "pixels",
      "sigma of the wide Gaussian; default auto, by the size and the distance of the spots; with "
      "--window-defaults %1",
      g_orAuto},
     "PeakSearch/BackgroundAveragingRadius"},
    {&Hunt::m_dfPeakThreshold,
     {-100000, 1000000, 2, 0.1, ""},
     "Least height of a peak in the difference of both smoothed frames, counts. Raise it if crosses lie on "
     "the background, lower it if spots have none.",
     {"peak-threshold", "counts",
      "minimum band-passed value of a peak; default auto, 8 robust standard deviations of the noise; with "
      "--window-defaults %1",
      g_orAuto},
     "PeakSearch/PeakBGDiffThreshold"},
    {&Hunt::m_dfSmoothRadius,
     {0, 1000, 2, 0.1, " pix."},
     "Sigma of the smoothing that point intensities are taken from, pixels."},
    {&Hunt::m_dfIntegrationRadius,
     {0, 1000, 1, 0.1, " pix."},
     "Radius of the disc whose pixels are summed, pixels. Lower it if neighbours get alike intensities: then "
     "the discs overlap.",
     {"integration-radius", "pixels",
      "radius of the disc of the 2D integration; default auto, three sigmas of a spot or half the distance "
      "to the next one; with --window-defaults %1",
      g_orAuto},
     "PeakSearch/Peak2DIntegrationRadious"},
    {&Hunt::m_dfIntegrationBackground,
     {0, 1000, 1, 0.1, " pix."},
     "Width of the ring around the disc, pixels, whose mean is taken as background.",
     {"integration-background", "pixels",
      "width of the ring around the disc; default auto, at most up to the next spot; with --window-defaults "
      "%1",
      g_orAuto},
     "PeakSearch/Peak2DIntegrationBG"},

    // Page "3D Peak Merging": what is shown and merged
    {&Mapping::m_dfResolutionMin,
     {0, 100, 2, 0.1, " Å⁻¹"},
     "Peaks nearer to the origin than this d*, Å⁻¹, are neither shown nor merged.",
     {"resolution-min", "Å⁻¹",
      "minimum d* of a peak to merge; default auto, beyond the false peaks of a saturated direct beam; with "
      "--window-defaults %1",
      g_orAuto}},
    {&Mapping::m_dfResolutionMax,
     {0, 100, 2, 0.1, " Å⁻¹"},
     "Peaks beyond this d*, Å⁻¹, are neither shown nor merged. Raise it if the pattern reaches further.",
     {"resolution-max", "Å⁻¹",
      "maximum d* of a peak to merge; default auto, no limit; with --window-defaults %1", g_orAuto}},
    {&Mapping::m_dfIntensityMin,
     {-100000, 1000000, 2, 1, ""},
     "Peaks of a smaller point intensity, counts, are neither shown nor merged. Raise it to leave false "
     "peaks out.",
     {"intensity-min", "counts",
      "minimum point intensity of a peak to merge; default auto, no limit; with --window-defaults %1",
      g_orAuto}},
    {&Mapping::m_dfIntensityMax,
     {-100000, 1000000, 2, 1, ""},
     "Peaks of a larger point intensity, counts, are neither shown nor merged. Raise it if strong "
     "reflections are missing.",
     {"intensity-max", "counts",
      "maximum point intensity of a peak to merge; default auto, no limit; with --window-defaults %1",
      g_orAuto}},

    // Page "3D Peak Merging": the chains
    {&Merge::m_dfMin3DDistance,
     {0, 1000, 2, 0.1, " pix."},
     "A chain of peaks is closed once the frame has moved this far from its last peak, pixels. Raise it if "
     "one reflection gives two points.",
     {"min-3d-distance", "pixels",
      "distance from the frame's plane that closes a chain; default auto, %1 or 0.87 times the way to the "
      "next spot; with --window-defaults %1",
      g_orAuto}},
    {&Merge::m_dfMax2DDistance,
     {0, 1000, 2, 0.1, " pix."},
     "A peak joins a chain whose last peak lies closer than this on the frame, pixels. Raise it if one "
     "reflection gives two points, lower it if points lie half way between two.",
     {"max-2d-distance", "pixels",
      "distance on the frames within a chain; default auto, %1 or half the way to the next spot; with "
      "--window-defaults %1",
      g_orAuto}},
    {&Merge::m_dfMin2DLength, {-1, 1000, 2, 0.1, " pix."}, "Least length of a chain on the frame, pixels."},
    {&Merge::m_dfMax3DLength,
     {0, 1000, 2, 0.1, " pix."},
     "Longer chains, pixels, are streaks: their peaks are shown one by one and not merged. Raise it if "
     "reflections near the axis, or of a bent crystal, end up there.",
     {"max-3d-length", "pixels", "maximum length of a chain that is not a streak; default %1"}},

    // Page "Unit Cell Determination and Indexing"
    {&Cell::m_dfCellRangeMin,
     {1, 1000, 1, 0.1, " Å"},
     "Shortest edge that is looked for, Å.",
     {"cell-min", "Å", "shortest cell edge searched; default auto, 2", OptionValues::OfPageOrAuto}},
    {&Cell::m_dfCellRangeMax,
     {1, 1000, 1, 0.1, " Å"},
     "Longest edge that is looked for, Å: somewhat above the longest that you believe in. Lower it if the "
     "cell comes out far too large, raise it if points lie between the nodes of the lattice.",
     {"cell-max", "Å", "longest cell edge searched; default auto, from the distances of the spots",
      OptionValues::OfPageOrAuto}},
    {&Index::m_dfIndexThreshold,
     {0.01, 0.5, 2, 0.01, ""},
     "How far each index may lie from a whole number. 0.05 to 0.1 is usual; a result that is good only with "
     "0.2 or more is none.",
     {"index-threshold", "", "how far an index may lie from a whole number; default %1"}},
    {&Index::m_nSpaceGroup,
     {1, g_nSpaceGroups, 0, 1, ""},
     "Space group: its Laue class makes the groups of equivalent reflections (column \"RGroup\" of the peak "
     "table), its absences the column \"Alwd.\"."},

    // Page "Intensity Extraction"
    {&Extract::m_nWindowRadius,
     {0, 10000, 0, 1, ""},
     "Radius of the disc whose pixels are summed by \"Extract Intensities\", and of the circles on the "
     "frame, pixels."},
    {&Extract::m_nBackgroundSize,
     {0, 10000, 0, 1, ""},
     "Width of the ring around the disc, pixels, whose mean is taken as background."},
    {&Extract::m_dfResolutionLimit, {0, 100, 1, 0.1, " Å⁻¹"}, "Predicted reflections go up to this d*, Å⁻¹."},

    // Page "Unit Cell Refinement"
    {&Refine::m_dfRefineIntensityLow,
     {-1e7, 1e7, 1, 0.1, ""},
     "Both peaks of a pair must have at least this point intensity, counts. Raise it if many groups of pairs "
     "are rejected: then fits of weak spots go astray.",
     {"refine-intensity-low", "counts",
      "minimum point intensity of a peak in a pair; default auto, the median of the indexed peaks, as fits "
      "of weak ones often fail; with --window-defaults %1",
      g_orAuto}},
    {&Refine::m_dfRefineIntensityHigh,
     {-1e7, 1e7, 1, 0.1, ""},
     "Both peaks of a pair must have at most this point intensity, counts. Raise it if strong pairs are "
     "missing.",
     {"refine-intensity-high", "counts",
      "maximum point intensity of a peak in a pair; default auto, no limit; with --window-defaults %1",
      g_orAuto}},
    {&Refine::m_dfRefineDStarLow,
     {0, 1000, 3, 0.05, " Å⁻¹"},
     "Least distance of the two peaks of a pair, Å⁻¹. Lower it, to about 0.3, if there are few pairs; long "
     "distances say more.",
     {"refine-dstar-low", "Å⁻¹",
      "minimum distance of the two peaks of a pair; default auto, 0.3, or less for small patterns; with "
      "--window-defaults %1",
      g_orAuto}},
    {&Refine::m_dfRefineDStarHigh,
     {0, 1000, 3, 0.05, " Å⁻¹"},
     "Largest distance of the two peaks of a pair, Å⁻¹.",
     {"refine-dstar-high", "Å⁻¹",
      "maximum distance of the two peaks of a pair; default auto, the largest on the frames; with "
      "--window-defaults %1",
      g_orAuto}},
};

}  // namespace

double Parameter::start() const
{
    return std::visit([](auto pMember) { return startOf(pMember); }, member);
}

bool Parameter::isIn(const ParameterRecords& records) const
{
    return std::visit([&](auto pMember) { return recordOf(records, pMember) != nullptr; }, member);
}

double Parameter::value(const ParameterRecords& records) const
{
    return std::visit([&](auto pMember) { return double(recordOf(records, pMember)->*pMember); }, member);
}

void Parameter::setValue(const ParameterRecords& records, double dfValue) const
{
    std::visit([&](auto pMember) { put(recordOf(records, pMember)->*pMember, dfValue); }, member);
}

const std::vector<Parameter>& parameterTable()
{
    return g_listParameter;
}

const Parameter& parameterOf(ParameterMember member)
{
    const auto itRow = std::find_if(g_listParameter.begin(), g_listParameter.end(),
                                    [&](const Parameter& row) { return row.member == member; });
    if (itRow == g_listParameter.end()) {
        throw std::out_of_range("a parameter without a row in the table");
    }
    return *itRow;
}

}  // namespace tessera
