// Members: the members of each record of a work state, in the order in which they are stored in its file.
#pragma once

#include "workstate/workstate.h"

#include <tuple>

namespace tessera {

/// Lists the members of a record for both the writer and the reader, so that the two cannot differ. of()
/// returns references to all of them. The list is used as a structured binding: if a record gets another
/// member, the code does not compile until the member is added here. g_nWorkStateVersion must then be raised
/// by one.
template <class T>
struct Members {
    static constexpr bool bKnown = false;
};

#define TESSERA_MEMBERS(Record, ...)         \
    template <>                              \
    struct Members<Record> {                 \
        static constexpr bool bKnown = true; \
        template <class TRecord>             \
        static auto of(TRecord& record)      \
        {                                    \
            auto& [__VA_ARGS__] = record;    \
            return std::tie(__VA_ARGS__);    \
        }                                    \
    }

// records, crystal, geometry, dataset, cloud
TESSERA_MEMBERS(Vec3D, x, y, z);
TESSERA_MEMBERS(CellParameters, a, b, c, alpha, beta, gamma);
TESSERA_MEMBERS(HKLRef, nH, nK, nL, dfI);
TESSERA_MEMBERS(Peak3D, dfX2D, dfY2D, dfX2DCorrected, dfY2DCorrected, fX3D, fY3D, fZ3D, dfH, dfK, dfL, nFrame,
                dfIPoint, dfI2D, dfDStar, dfFrameTilt, dfIntFit, dfFrameFit, dfHalfWidth, dfTiltFit, nID,
                nRGroup);
TESSERA_MEMBERS(PeakHuntingParameters, dfPeakRadius, dfBackgroundRadius, dfSmoothRadius, dfPeakThreshold,
                dfFrameScale, dfIntegrationRadius, dfIntegrationBackground, bAutoRadii);
TESSERA_MEMBERS(MappingParameters, bApplyStretching, dfResolutionMin, dfResolutionMax, dfIntensityMin,
                dfIntensityMax);
TESSERA_MEMBERS(PeakMergingParameters, dfMin3DDistance, dfMax2DDistance, dfMin2DLength, dfMax3DLength,
                bIntegrate2D, bIntegrateThroughFrames);
TESSERA_MEMBERS(CellHuntingParameters, dfCellRangeMin, dfCellRangeMax, method, bAutoRange);
TESSERA_MEMBERS(IndexingParameters, dfIndexThreshold, nSpaceGroup, bOutputIndexing, bOutputStatistics,
                bOutputRefinedCell);
TESSERA_MEMBERS(ExtractionParameters, nWindowRadius, nBackgroundSize, dfResolutionLimit);
TESSERA_MEMBERS(RefinementParameters, dfRefineIntensityLow, dfRefineIntensityHigh, dfRefineDStarLow,
                dfRefineDStarHigh, bRefine2D, bOutputPeakList, referenceCell, listExcluded);
TESSERA_MEMBERS(CSymOp, dfRotation, dfBottom, dfOne, dfTranslation);
TESSERA_MEMBERS(CSpaceGroup, nNumber, vecOperation);
TESSERA_MEMBERS(CMatrix3, dfElement);
TESSERA_MEMBERS(RotationMode, kind, dfPrecessionAngle);
TESSERA_MEMBERS(SeriesDistortion, dfEllipseAmplitude, dfEllipseAzimuth, dfThirdOrderRadial,
                dfThirdOrderSpiral, dfParabolicAmplitude, dfParabolicAzimuth, dfRadius, dfAxisOutOfPlane);
TESSERA_MEMBERS(PlaneTerms<double>, centreX, centreY, axis, stretchingCos, stretchingSin, ellipseCos,
                ellipseSin, radial, spiral, parabolicCos, parabolicSin);
TESSERA_MEMBERS(TurnTerms<double>, outOfPlane, scale, offset);
TESSERA_MEMBERS(DiffractionGeometry, aBasis, plane, turn, dfWavelength, dfPixelSize, dfRadius, dfMiddleTilt);
TESSERA_MEMBERS(FramePlace, dfX, dfY);
TESSERA_MEMBERS(MaskData, fillRule, listPolygon);
TESSERA_MEMBERS(PeakMapping, listShift, listOverallTilt, dfCenterX, dfCenterY, dfWavelength, dfPixelSize,
                dfRotationAxis, dfTiltRelaxation, dfStretchAmplitude, dfStretchAzimuth, distortion);
TESSERA_MEMBERS(PeaksMade, hunting, nAreas, nHotPixels, nPeaks);
TESSERA_MEMBERS(MergedMade, mapping, limits, merging, nPeaks, nMerged);
TESSERA_MEMBERS(CellMade, mapping, nMerged, listCell);
TESSERA_MEMBERS(IndexedMade, nMerged, dfThreshold, nIndexed);
TESSERA_MEMBERS(GeometryMade, mapping, listCell);
TESSERA_MEMBERS(MadeWith, peaks, limitsShown, merged, cell, indexed, geometry, integration);
TESSERA_MEMBERS(FrameRange, nFirst, nLast);
TESSERA_MEMBERS(SeriesChoice, nBin, nSum, listFrames, listSkipped);
TESSERA_MEMBERS(FrameTilts, listStage, listBeam, listOverall);
TESSERA_MEMBERS(SeriesReading, choice, listFile, tilts, listFirst, dfSaturation, listHotPixel);
TESSERA_MEMBERS(SeriesData, strProjectDir, strProjectName, listFrameFile, listStageTilt, listBeamTilt,
                listOverallTilt, listBeamTiltBreak, listHotPixel, reading, dfWavelength, dfPixelSize,
                dfRotationAxis, nAxisDecimals, bRotationAxisKnown, rotation, dfTiltRelaxation,
                dfStretchAmplitude, dfStretchAzimuth, distortion, listShift, dfCenterX, dfCenterY,
                listCellFound, listCell, listPeakFrame, peakMapping, vecPeakGroup, listPeakFrameShown,
                listPeakMergedShown, listPeakMerged, listPeakChain, vecPeakIndexedOnFrame, vecReflectionFrame,
                listReflectionIndexed, listCellIndexed, nIntensityMode, maskPeakHunting, spaceGroup, made);
TESSERA_MEMBERS(PointGroup, strLabel, listPoint, color, bVisible);

// refinement
TESSERA_MEMBERS(CellConstraint, system, matTransform, strSymbol);
TESSERA_MEMBERS(GeometryFit, form, numbers, listFree);
TESSERA_MEMBERS(FixedNumber, nNumber, strWhy);
TESSERA_MEMBERS(GeometryModel, fit, geometry, errors, cell, cellErrors, bEllipse, dfRms, dfRmsSeen,
                dfRmsUnseen, listDrift, nDriftIntervals, nJumps);
TESSERA_MEMBERS(GeometryRefinement, strReason, before, free, constrained, listFixed, nPeaks, nJoined,
                nFitBefore, nFitAfter, dfRmsBefore, dfRmsAfter, dfTiltRange, bFinePlaces);

// integration
TESSERA_MEMBERS(gemmi::Op, rot, tran);
TESSERA_MEMBERS(gemmi::GroupOps, sym_ops, cen_ops);
TESSERA_MEMBERS(SeriesGeometry, geometry, listTilt, listBeam, sizeFrame, rotation);
TESSERA_MEMBERS(TrustedRange, dfSaturation, strSource);
TESSERA_MEMBERS(Observation, anIndex, dfFrame, dfTilt, place, dfDStar, dfSpeed, nFirstFrame, nLastFrame,
                nFlags, dfIntensity, dfSigma, dfBackground, dfRecorded, bProfileFit, dfLorentz, dfScale,
                dfSigmaFactor);
TESSERA_MEMBERS(SpotModel, dfSigma, dfSigmaAtEdge, dfDiscRadius, dfRockingWidth, dfMosaicity, dfRockingOff,
                dfGain, dfReadNoise, dfSaturation, trusted, nStrong);
TESSERA_MEMBERS(IntegratedSeries, listObservation, model, dfMaxDStar);
TESSERA_MEMBERS(ObservationSymmetry, anTransform, nDenominator, ops);
TESSERA_MEMBERS(OperationAgreement, strOperation, nOrder, nPairs, dfCorrelation, dfR, dfLikelihood);
TESSERA_MEMBERS(LaueCandidate, strClass, symmetry, cell, system, chCentring, dfLikelihood, dfRInt, dfCcHalf,
                nOperations);
TESSERA_MEMBERS(LaueProposal, listOperation, listCandidate);
TESSERA_MEMBERS(RejectedObservation, nObservation, dfDeviation, strWhy);
TESSERA_MEMBERS(ScalingResult, listFrameScale, listFrameDecay, dfErrorA, dfErrorB, listRejected, nUsed);
TESSERA_MEMBERS(ShellQuality, dfDMax, dfDMin, nObserved, nUnique, nPossible, dfCompleteness, dfMultiplicity,
                dfIOverSigma, dfRInt, dfRMeas, dfRPim, dfCcHalf);
TESSERA_MEMBERS(MergedReflection, anIndex, dfIntensity, dfSigma, nObserved);
TESSERA_MEMBERS(FrameQuality, nObserved, dfScale, dfRInt, dfIOverSigma);
TESSERA_MEMBERS(MergingQuality, overall, listShell, listFrame, listMerged, dfWilsonB, listWilson,
                listCompletenessByFrame);
TESSERA_MEMBERS(ConditionEvidence, strCondition, nForbidden, dfRatio, dfRatioError, dfLikelihood);
TESSERA_MEMBERS(SpaceGroupCandidate, nNumber, strName, dfLikelihood, listCondition, bCentric);
TESSERA_MEMBERS(SpaceGroupRanking, listCondition, listCandidate);
TESSERA_MEMBERS(CompletenessForecast, dfNow, dfGoal, dfMoreAtEnd, dfMoreAtStart, dfBest, listCurve, strText);
TESSERA_MEMBERS(IntegrationResult, series, integrated, laue, chosen, scaling, unscaled, scaled, quality,
                spaceGroups, spaceGroup, forecast, cell, cellErrors);

TESSERA_MEMBERS(WorkState, series, hunting, mapping, merging, cellHunting, indexing, extraction, refinement,
                bConstantBackground, knownCell, matTransformation, listRawGroup, listMergedGroup,
                listMergedPoint, listTablePeak, pGeometry, pIntegration);

#undef TESSERA_MEMBERS

// Enumerators read from a file are checked, since no code is prepared for other values. The compiler warns if
// one of these switches lacks an enumerator.

/// Whether a value read from a file is an enumerator.
constexpr bool isKnown(RotationKind kind)
{
    switch (kind) {
        case RotationKind::Continuous:
        case RotationKind::Stepped:
        case RotationKind::Precession:
            return true;
    }
    return false;
}
/// Whether a value read from a file is an enumerator.
constexpr bool isKnown(CellSearchMethod method)
{
    switch (method) {
        case CellSearchMethod::DifferenceVectors:
        case CellSearchMethod::Directions:
        case CellSearchMethod::BestOfBoth:
            return true;
    }
    return false;
}
/// Whether a value read from a file is an enumerator.
constexpr bool isKnown(LatticeSystem system)
{
    switch (system) {
        case LatticeSystem::Triclinic:
        case LatticeSystem::Monoclinic:
        case LatticeSystem::Orthorhombic:
        case LatticeSystem::Tetragonal:
        case LatticeSystem::Rhombohedral:
        case LatticeSystem::Hexagonal:
        case LatticeSystem::Cubic:
            return true;
    }
    return false;
}

}  // namespace tessera
