#include "batch/seriesoptions.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace tessera {

namespace {

void takeRanges(COptionReader& reader, const char* pszName, QList<FrameRange>& listRange)
{
    for (const QString& strText : reader.values(QLatin1String(pszName))) {
        QString strReason;
        if (const auto ranges = frameRanges(strText, &strReason)) {
            listRange += *ranges;
        } else {
            reader.refuse(QStringLiteral("--%1 %2: %3").arg(QLatin1String(pszName), strText, strReason));
        }
    }
}

void takeSize(COptionReader& reader, QSize& size)
{
    const QString strName = QStringLiteral("size");
    if (!reader.isSet(strName)) {
        return;
    }
    static const QRegularExpression s_reSize(
        QRegularExpression::anchoredPattern(QStringLiteral("([1-9][0-9]{0,5})[x×]([1-9][0-9]{0,5})")));
    const QString strText = reader.name(strName);
    const QRegularExpressionMatch match = s_reSize.match(strText);
    if (match.hasMatch()) {
        size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
    } else {
        reader.refuse(QStringLiteral("--size %1: not a size such as 512x512").arg(strText));
    }
}

}  // namespace

void addSeriesOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {"bin",
         QStringLiteral(
             "Sum N x N pixels to one as the frames are read, 1 to %1; default 1, or as in the file beside "
             "the project. Pixel size, centre, region, mask and hot pixels are given for the frames as they "
             "are on the disk, and are converted; radii are in pixels of the binned frames.")
             .arg(g_nMostBin),
         "N"},
        {"sum",
         "Sum every N successive frames to one as they are read, with the mean of their tilts; default 1. "
         "Frames that are left over before a gap or at the end are left out.",
         "N"},
        {"frames",
         "Use only these frames, by their numbers in the project or folder from 1 on: 5-60, 5-, -60 or "
         "1-10,20-30; default: all.",
         "A-B"},
        {"skip", "Leave these frames out, such as 3,7-9.", "list"},
        {"size",
         "Use only the frames of this size, WIDTHxHEIGHT, of a folder with several sizes; default: each size "
         "is a series.",
         "size"},
    });
}

void takeSeriesOptions(COptionReader& reader, RoadOptions& options)
{
    SeriesChoice choice;
    choice.nBin = reader.wholeNumber(QStringLiteral("bin"), 1, g_nMostBin, 1);
    choice.nSum = reader.wholeNumber(QStringLiteral("sum"), 1, g_nMostSum, 1);
    takeRanges(reader, "frames", choice.listFrames);
    takeRanges(reader, "skip", choice.listSkipped);
    for (const char* pszName : {"bin", "sum", "frames", "skip"}) {
        if (reader.isSet(QLatin1String(pszName))) {
            options.choice = choice;
        }
    }
    takeSize(reader, options.sizeFrame);
}

}  // namespace tessera
