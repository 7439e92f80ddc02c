#include "road/seriescard.h"

#include "crystal/cellarithmetic.h"
#include "dataset/displayname.h"
#include "dataset/opening.h"
#include "dataset/projectfile.h"
#include "dataset/serieschoicefile.h"
#include "dataset/textlines.h"
#include "dataset/unitcellfile.h"
#include "lattice/latticeanalysis.h"
#include "records/resultfile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cmath>

namespace tessera {

namespace {

const double g_dfSameCell = 0.002;  // Å and degrees; both files have at least three decimals

struct ToldLattice {
    CellParameters cell;
    QString strLattice;
};

std::optional<CellParameters> cellOfArray(const QJsonArray& array)
{
    if (array.size() != 6) {
        return std::nullopt;
    }
    std::array<double, 6> adf = {};
    for (int i = 0; i < 6; ++i) {
        adf[i] = array[i].toDouble();
        if (!(adf[i] > 0)) {
            return std::nullopt;
        }
    }
    return CellParameters{adf[0], adf[1], adf[2], adf[3], adf[4], adf[5]};
}

QString latticeText(const QString& strSymbol, const QString& strSystem)
{
    return strSymbol.isEmpty() ? QString() : QStringLiteral("%1, %2").arg(strSymbol, strSystem);
}

/// Cell and lattice of a JSON object with the keys of a summary.
std::optional<ToldLattice> toldBy(const QJsonObject& summary)
{
    const QJsonObject cell = summary[QLatin1String("cell")].toObject();
    const std::optional<CellParameters> parameters = cellOfArray(cell[QLatin1String("parameters")].toArray());
    if (!parameters) {
        return std::nullopt;
    }
    const QJsonObject lattice = summary[QLatin1String("lattice")].toObject();
    return ToldLattice{*parameters, latticeText(lattice[QLatin1String("symbol")].toString(),
                                                lattice[QLatin1String("system")].toString())};
}

/// The same for a file: a summary of the driver, or the record of a run, which has a part for each stage.
std::optional<ToldLattice> toldByFile(const QString& strFileName)
{
    const std::optional<QByteArray> bytes = readFileBytes(strFileName, g_nMaxTextFile);
    if (!bytes) {
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(*bytes).object();
    if (std::optional<ToldLattice> told = toldBy(object)) {
        return told;
    }
    const QJsonArray listStage = object[QLatin1String("stages")].toArray();
    for (const QJsonValue& stage : listStage) {
        if (std::optional<ToldLattice> told = toldBy(stage.toObject()[QLatin1String("found")].toObject())) {
            return told;
        }
    }
    return std::nullopt;
}

bool isSameCell(const CellParameters& one, const CellParameters& other)
{
    for (size_t i = 0; i < 6; ++i) {
        if (std::abs(one.numbers()[i] - other.numbers()[i]) > g_dfSameCell) {
            return false;
        }
    }
    return true;
}

QString latticeOf(const ReciprocalBasis& basis)
{
    const LatticeAnalysis analysis = analyseLattice(latticeBasisOf(basis), LatticePoints());
    return analysis.proposed ? latticeText(bravaisSymbol(analysis.proposed->symmetry),
                                           nameOf(analysis.proposed->symmetry.system))
                             : QString();
}

void readCell(const QString& strFolder, const QString& strBaseName, SeriesCard& card)
{
    const QString strBase = QDir(strFolder).filePath(strBaseName);
    QString strCellFile = strBase + resultSuffix(ResultFile::Cell);
    if (!QFileInfo::exists(strCellFile)) {
        strCellFile = QDir(strFolder).filePath(fixedName(ResultFile::Cell));
    }
    const std::optional<ReciprocalBasis> basis = basisFromList(readUnitCellFile(strCellFile));
    card.cell = basis ? cellParameters(*basis) : std::nullopt;
    for (const QString& strFile :
         {strBase + resultSuffix(ResultFile::Run), strBase + QStringLiteral(".json")}) {
        const std::optional<ToldLattice> told = toldByFile(strFile);
        if (!told || (card.cell && !isSameCell(*card.cell, told->cell))) {
            continue;
        }
        card.cell = told->cell;
        card.strLattice = told->strLattice;
        return;
    }
    if (card.cell) {
        card.strLattice = latticeOf(*basis);
    }
}

/// Name and frames as they will be once the series is opened.
int chosenFrames(const ProjectFile& project)
{
    const int nFrames = project.frameFiles().size();
    const auto choice = readSeriesChoice(QDir(project.folder()).filePath(project.baseName()));
    const QList<int> listTaken = choice ? takenFrames(*choice, nFrames) : QList<int>();
    const QList<int> listFirst = choice ? sumStarts(listTaken, choice->nSum) : QList<int>();
    return listFirst.isEmpty() ? nFrames : listFirst.size();
}

}  // namespace

SeriesCard seriesCard(const QStringList& listFile)
{
    SeriesCard card;
    card.strName = displayName(listFile);
    if (listFile.isEmpty()) {
        return card;
    }
    const QFileInfo info(listFile.first());
    card.strFolder = info.absolutePath();
    card.bThere = info.isFile();
    if (!card.bThere) {
        return card;
    }
    if (openKind(listFile) != OpenKind::project) {
        card.nFrames = listFile.size();
        return card;
    }
    ProjectFile project;
    if (project.read(listFile.first(), AxisLine::MayLack)) {
        card.nFrames = chosenFrames(project);
        readCell(project.folder(), project.baseName(), card);
    }
    return card;
}

}  // namespace tessera
