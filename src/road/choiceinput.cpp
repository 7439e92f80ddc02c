#include "road/choiceinput.h"

#include "dataset/projectfile.h"
#include "dataset/serieschoicefile.h"

#include <QDir>
#include <QFileInfo>

namespace tessera {

namespace {

/// The paths (without suffix) at which a choice may be saved, in the order in which they are tried.
QStringList basesOf(const RoadOptions& options)
{
    const QFileInfo first(options.listInput.first());
    const QString strName = options.strSeriesName.isEmpty() ? first.completeBaseName()
                                                            : options.strSeriesName;
    QStringList listBase;
    const bool bGoesOn = options.stageFrom > RoadStage::Shifts || options.exports.bOnly;
    if (!options.strOutDir.isEmpty() && bGoesOn) {
        listBase.append(QDir(options.strOutDir).absoluteFilePath(strName));
    }
    if (options.isProject() || (bGoesOn && options.strOutDir.isEmpty())) {
        listBase.append(first.absoluteDir().absoluteFilePath(strName));
    }
    return listBase;
}

QString whatIsWrong(const SeriesChoice& choice, int nFrames)
{
    QString strReason;
    SeriesChoice frames;
    frames.listFrames = choice.listFrames;
    if (takenFrames(frames, nFrames, &strReason).isEmpty()) {
        return QStringLiteral("--frames %1: %2").arg(frameRangesText(choice.listFrames), strReason);
    }
    const QList<int> listTaken = takenFrames(choice, nFrames, &strReason);
    if (listTaken.isEmpty()) {
        return QStringLiteral("--skip %1: %2").arg(frameRangesText(choice.listSkipped), strReason);
    }
    if (sumStarts(listTaken, choice.nSum).isEmpty()) {
        return QStringLiteral("--sum %1: there are not as many successive frames among the %2 that are used")
            .arg(choice.nSum)
            .arg(listTaken.size());
    }
    return {};
}

}  // namespace

QString takeChoiceOfInput(RoadOptions& options)
{
    for (const QString& strBase : options.choice ? QStringList() : basesOf(options)) {
        QString strReason;
        const std::optional<SeriesChoice> kept = readSeriesChoice(strBase, &strReason);
        if (!kept) {
            return strReason;
        }
        if (QFileInfo::exists(seriesChoiceFile(strBase))) {
            options.choice = *kept;
            break;
        }
    }
    if (!options.choice) {
        return {};
    }
    int nFrames = options.listInput.size();
    if (options.isProject()) {
        ProjectFile project;
        if (!project.read(options.listInput.first(), AxisLine::MayLack)) {
            return {};  // opening it will fail with a reason
        }
        nFrames = project.frameFiles().size();
    }
    return nFrames > 0 ? whatIsWrong(*options.choice, nFrames) : QString();
}

}  // namespace tessera
