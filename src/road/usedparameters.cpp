#include "road/usedparameters.h"

#include "reciprocal/latticehunting.h"
#include "road/chosensearch.h"
#include "road/roadnumbers.h"

#include <QLocale>

namespace tessera {

namespace {

QString exact(double dfValue)
{
    return QString::number(dfValue, 'g', QLocale::FloatingPointShortest);
}

/// Names of parameters that have no option.
QString nameOf(const Parameter& row)
{
    if (row.option.pszName) {
        return QLatin1String(row.option.pszName);
    }
    static const std::pair<ParameterMember, const char*> aName[] = {
        {&PeakHuntingParameters::m_dfSmoothRadius, "smooth-radius"},
        {&PeakMergingParameters::m_dfMin2DLength, "min-2d-length"},
        {&IndexingParameters::m_nSpaceGroup, "space-group"}};
    for (const auto& [member, pszName] : aName) {
        if (member == row.member) {
            return QLatin1String(pszName);
        }
    }
    return {};
}

void putNumbers(std::vector<UsedParameter>& list, const RoadState& state)
{
    RoadOptions given = state.given;
    RoadOptions used = state.options;
    const bool bSearched = state.results.cell && used.stageFrom <= RoadStage::Cell;
    if (bSearched && used.strCellFile.isEmpty() && !used.knownCell) {
        used.cell = withRange(chosenSearch(state), state.dataSet);
    }
    MappingParameters mapping = state.mapping;
    DataSet data;  // only the numbers of the series, as writable records are needed
    data.takeSeries(state.dataSet);
    const ParameterRecords records = {&data,         &used.hunting,    &mapping,
                                      &used.merging, &used.cell,       &used.indexing,
                                      nullptr,       &used.refinement, &data.m_distortion};
    const ParameterRecords recordsGiven = {nullptr,        &given.hunting,    nullptr,
                                           &given.merging, &given.cell,       &given.indexing,
                                           nullptr,        &given.refinement, nullptr};
    for (const Parameter& row : parameterTable()) {
        const QString strName = nameOf(row);
        if (strName.isEmpty() || !row.isIn(records)) {
            continue;
        }
        bool bGiven = row.isIn(recordsGiven) && row.value(recordsGiven) != row.start();
        if (const std::optional<double>* pGiven = givenNumber(given, row.member)) {
            bGiven = pGiven->has_value();
        }
        if (const auto* pMember = std::get_if<double SeriesDistortion::*>(&row.member)) {
            for (const auto& one : given.listDistortion) {
                bGiven = bGiven || one.first == *pMember;
            }
        }
        list.push_back(
            {strName, exact(row.value(records)), QString::fromUtf8(row.option.pszUnit), true, bGiven});
    }
}

QString onOff(bool bOn)
{
    return bOn ? QStringLiteral("on") : QStringLiteral("off");
}

void putChoices(std::vector<UsedParameter>& list, const RoadState& state)
{
    static const char* const aszMethod[] = {"vectors", "directions", "best"};
    const RoadOptions& used = state.options;
    const auto put = [&list](const char* pszName, const QString& strValue, bool bGiven = false) {
        list.push_back({QLatin1String(pszName), strValue, {}, false, bGiven});
    };
    const SeriesChoice& choice = state.dataSet.m_reading.choice;
    if (!choice.isPlain()) {
        const auto orAll = [](const QList<FrameRange>& listRange, const char* pszElse) {
            return listRange.isEmpty() ? QString(QLatin1String(pszElse)) : frameRangesText(listRange);
        };
        put("bin", QString::number(choice.nBin), choice.nBin > 1);
        put("sum", QString::number(choice.nSum), choice.nSum > 1);
        put("frames", orAll(choice.listFrames, "all"), !choice.listFrames.isEmpty());
        put("skip", orAll(choice.listSkipped, "none"), !choice.listSkipped.isEmpty());
    }
    put("apply-stretching", onOff(state.mapping.m_bApplyStretching),
        state.given.bApplyStretching.has_value());
    put("cell-method",
        QLatin1String(aszMethod[int(used.cellMethod.value_or(
            used.bWindowDefaults ? CellSearchMethod::DifferenceVectors : CellSearchMethod::BestOfBoth))]),
        state.given.cellMethod.has_value());
    put("defects", used.bFindDefects ? QStringLiteral("auto") : QStringLiteral("off"), !used.bFindDefects);
    put("intensity-in-frames", used.merging.m_bIntegrate2D ? QStringLiteral("2d") : QStringLiteral("point"),
        !used.merging.m_bIntegrate2D);
    put("intensity-through-frames",
        used.merging.m_bIntegrateThroughFrames ? QStringLiteral("3d") : QStringLiteral("maximum"),
        used.merging.m_bIntegrateThroughFrames);
    const IntensityOptions& intensities = used.intensities;
    put("rotation", rotationModeText(intensities.rotation.value_or(state.dataSet.m_rotation)),
        intensities.rotation.has_value());
    put("profile-fit", onOff(intensities.bProfileFit), !intensities.bProfileFit);
    put("scaling", onOff(intensities.bScale), !intensities.bScale);
    const auto& integrate = state.results.integrate;
    put("laue",
        integrate && integrate->result ? integrate->result->chosen.strClass : intensities.strLaueClass,
        !intensities.strLaueClass.isEmpty());
    put("formula", hillFormula(intensities.formula), !intensities.formula.isEmpty());
    put("setting", used.bConventional ? QStringLiteral("conventional") : QStringLiteral("as-found"),
        used.bConventional);
    if (state.results.shifts) {
        const QRect& rc = state.results.shifts->rcRegion;
        put("region", QStringLiteral("%1,%2,%3").arg(rc.x()).arg(rc.y()).arg(rc.width()),
            state.given.rcRegion.has_value());
    }
}

}  // namespace

std::vector<UsedParameter> usedParameters(const RoadState& state)
{
    std::vector<UsedParameter> list;
    putNumbers(list, state);
    if (state.results.integrate && state.results.integrate->result) {
        list.push_back({QStringLiteral("d-min"),
                        exact(state.results.integrate->result->quality.overall.dfDMin), QStringLiteral("Å"),
                        true, state.given.intensities.dfDMin > 0});
    }
    putChoices(list, state);
    return list;
}

}  // namespace tessera
