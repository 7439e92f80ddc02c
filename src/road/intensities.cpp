#include "road/intensities.h"

#include "crystal/cellarithmetic.h"
#include "dataset/serieschoice.h"
#include "integration/geometryforintegration.h"
#include "lattice/latticebasis.h"
#include "records/runends.h"

#include <QFile>
#include <QFileInfo>

namespace tessera {

namespace {

/// The cell to which the indices of the observations belong, in double precision, with its errors if it was
/// refined.
JudgedLattice judgedLattice(const SeriesGeometry& series, const GeometryRefinement* refined,
                            const LatticeAnalysis* lattice)
{
    JudgedLattice judged;
    Eigen::Matrix3d matReciprocal;
    for (int n = 0; n < 3; ++n) {
        const DoubleVector& vec = series.geometry.aBasis[n];
        matReciprocal.row(n) << vec[0], vec[1], vec[2];
    }
    judged.cell = cellOf(matReciprocal.inverse().transpose());
    if (refined && refined->done()) {
        judged.cellErrors = refined->free.cellErrors;
    }
    if (lattice) {
        judged.listType = lattice->listType;
    }
    return judged;
}

}  // namespace

const QStringList& laueClassNames()
{
    static const QStringList list =
        QStringLiteral("-1 2/m mmm 4/m 4/mmm -3 -3m1 -31m -3m 6/m 6/mmm m-3 m-3m").split(QLatin1Char(' '));
    return list;
}

RunResult<IntegrationResult> findIntensities(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined,
                                             const LatticeAnalysis* lattice, const IntensityOptions& options,
                                             int nJobs, CRunReport& report)
{
    std::optional<SeriesGeometry> series = seriesGeometry(dataSet, mapping, refined);
    if (!series) {
        return refuseRun(report,
                         QStringLiteral("To integrate, a cell and the tilts and shifts of all frames are "
                                        "needed."));
    }
    series->rotation = options.rotation.value_or(dataSet.m_rotation);
    IntegrationOptions integration;
    integration.dfMaxDStar = options.dfDMin > 0 ? 1 / options.dfDMin : 0;
    integration.bProfileFit = options.bProfileFit;
    integration.dfDiscRadius = options.dfDiscRadius;
    integration.dfRockingWidth = options.dfRockingWidth;
    integration.trusted = trustedRangeOf(dataSet);
    if (lattice && lattice->whole.strCentring.size() == 1) {
        integration.chCentring = lattice->whole.strCentring[0].toLatin1();
    }
    const RunResult<IntegratedSeries> integrated = integrateSeries(dataSet, *series, integration, nJobs,
                                                                   report);
    if (!integrated.finished()) {
        return integrated.outcome;
    }
    JudgementOptions judgement;
    judgement.scaling.bScale = options.bScale;
    judgement.scaling.bDecay = options.bDecay;
    judgement.scaling.dfRejection = options.dfRejection;
    judgement.dfDMin = options.dfDMin;
    judgement.strLaueClass = options.strLaueClass;
    judgement.nSpaceGroup = options.nSpaceGroup;
    IntegrationResult judged = judgeIntegration(*integrated.made, *series,
                                                judgedLattice(*series, refined, lattice), judgement, report);
    if (!report.goOn()) {
        return RunOutcome{RunEnd::Stopped, {}};
    }
    if (judged.quality.listMerged.empty()) {
        return failRun(report, QStringLiteral("No reflection was measured: there is nothing to merge."));
    }
    return judged;
}

std::optional<IntegrationFiles> writeIntensities(const DataSet& dataSet, const IntegrationResult& result,
                                                 const IntensityOptions& options,
                                                 const QStringList& listTaken, CRunReport& report,
                                                 QString* pstrReason)
{
    const QString strFile = fileOfProject(dataSet, ResultFile::Integrated);
    const int nMost = 255;  // bytes, the limit of names in common file systems
    if (QFile::encodeName(QFileInfo(strFile).fileName()).size() > nMost) {
        report.addMessage(QStringLiteral("No files of the intensities: the name of the series is too long."),
                          Severity::Milestone);
        return IntegrationFiles();
    }
    StructureOptions structure;
    structure.strName = dataSet.m_strProjectName;
    structure.dfWavelength = dataSet.m_dfWavelength;
    structure.formula = options.formula;
    structure.nUnits = options.nUnits;
    structure.strChoice = choiceText(dataSet.m_reading.choice);
    const StructureData data = structureData(result, structure);
    QString strBase = strFile;
    strBase.chop(resultSuffix(ResultFile::Integrated).size());
    const std::optional<IntegrationFiles> files = writeIntegrationFiles(result, data, strBase, listTaken,
                                                                        pstrReason);
    if (!files) {
        return {};
    }
    for (const QString& strNote : files->listNote) {
        report.addMessage(strNote, Severity::Milestone);
    }
    report.addMessage(
        QStringLiteral("Intensities written: %1").arg(files->listFile.join(QStringLiteral(", "))));
    return files;
}

}  // namespace tessera
