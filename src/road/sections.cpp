#include "road/sections.h"

#include "exchange/sectionfiles.h"
#include "integration/geometryforintegration.h"
#include "records/runends.h"

namespace tessera {

RunResult<std::vector<ReciprocalSection>> findSections(
    const DataSet& dataSet, const MappingParameters& mapping, const GeometryRefinement* refined,
    const std::vector<SectionPlane>& listPlane, const SectionOptions& options, int nJobs, CRunReport& report)
{
    if (!cellInForce(dataSet)) {
        return refuseRun(report, QStringLiteral("A section needs a unit cell: find or load one first."));
    }
    const std::optional<SeriesGeometry> series = seriesGeometry(dataSet, mapping, refined);
    if (!series) {
        return refuseRun(report, QStringLiteral("A section needs the tilts and the shifts of all frames."));
    }
    return makeSections(dataSet, *series, listPlane, options, nJobs, report);
}

QStringList sectionFiles(const DataSet& dataSet, const std::vector<SectionPlane>& listPlane)
{
    QStringList listFile;
    for (const SectionPlane& plane : listPlane) {
        listFile.append(sectionFile(dataSet, plane, QStringLiteral(".mrc")));
        listFile.append(sectionFile(dataSet, plane, QStringLiteral(".png")));
    }
    return listFile;
}

bool writeSectionsOfRoad(RoadState& state)
{
    const ExportOptions& exports = state.options.exports;
    const GeometryRefinement* pRefined = state.results.geometry ? &*state.results.geometry : nullptr;
    const RunResult<std::vector<ReciprocalSection>> sections = findSections(
        state.dataSet, state.mapping, pRefined, exports.listSection, exports.section, state.options.jobs(),
        state.report);
    if (!sections.finished()) {
        return false;
    }
    const int nBefore = state.results.listFile.size();
    const bool bWritten =
        writeSections(state.dataSet, *sections.made, {}, state.report, &state.results.listFile).finished();
    QStringList listFile = state.results.listFile.mid(nBefore);
    for (const ReciprocalSection& section : *sections.made) {
        if (listFile.size() < 2) {
            break;  // this section and the following ones are not written
        }
        SectionResult result;
        result.strPlane = section.plane.strName;
        result.dfMaxDStar = section.dfMaxDStar;
        result.dfThickness = section.dfThickness;
        result.dfStep = section.dfStep;
        result.dfSeen = seenShare(section);
        result.listFile = QStringList{listFile.takeFirst(), listFile.takeFirst()};
        state.results.listSection.append(result);
    }
    return bWritten;
}

}  // namespace tessera
