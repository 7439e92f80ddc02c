// The record of a run and its report, against sha256sum, a second run, an XML reader and the summary.
#include "road/filefacts.h"
#include "road/roadcommand.h"
#include "tests/batch/batchprogram.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <memory>

namespace tessera {

namespace {

const QString g_strName = "it's <b>&\"q\" $(touch x)";  // of a project that nobody has told what to avoid
const int g_nFrames = 40;

QJsonObject jsonOf(const QString& strFile)
{
    return QJsonDocument::fromJson(readBytes(strFile)).object();
}

/// What a page holds, read back by a reader of XML.
struct Page {
    bool bWellFormed = false;
    QString strHeading;
    QStringList listText;       ///< of all elements but style
    QStringList listReference;  ///< values of attributes that lead anywhere
    QStringList listPre;
    QMap<QString, int> mapElement;     ///< how often each is there
    std::vector<QStringList> listRow;  ///< of all tables
    QMap<QString, int> mapPoints;      ///< of the longest path below each title
};

Page readPage(const QByteArray& bytes)
{
    Page page;
    QXmlStreamReader xml(bytes);
    QString strTitle;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QString strElement = xml.name().toString();
        ++page.mapElement[strElement];
        for (const QXmlStreamAttribute& attribute : xml.attributes()) {
            if (QStringList{"href", "src", "action", "data"}.contains(attribute.name().toString())) {
                page.listReference.append(attribute.value().toString());
            }
            EXPECT_FALSE(attribute.name().startsWith(QLatin1String("on")));
            if (attribute.name() == QLatin1String("d")) {
                page.mapPoints[strTitle] = std::max(page.mapPoints[strTitle],
                                                    1 + attribute.value().toString().count('L'));
            }
        }
        if (strElement == "tr") {
            page.listRow.emplace_back();
        }
        if (QStringList{"h1", "h2", "h3", "p", "td", "th", "dd", "pre", "title", "li", "figcaption"}.contains(
                strElement)) {
            const QString strText = xml.readElementText();
            page.listText.append(strText);
            if (strElement == "h1") {
                page.strHeading = strText;
            }
            if (strElement == "title") {
                strTitle = strText;
            }
            if (strElement == "pre") {
                page.listPre.append(strText);
            }
            if (strElement == "td" && !page.listRow.empty()) {
                page.listRow.back().append(strText);
            }
        }
    }
    page.bWellFormed = !xml.hasError();
    return page;
}

class Provenance : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_pDir = std::make_unique<QTemporaryDir>();
        ASSERT_EQ(simulateQuartz(s_pDir->path()).nStatus, 0);
        ASSERT_TRUE(QFile::rename(path("q.ed3d"), path(g_strName + ".ed3d")));
        QFile::remove(path("hotpixels.txt"));  // so that the run finds them, and lists them for the next one
        s_first = runBatch({path(g_strName + ".ed3d"), "--json", path("s.json"), "--report", path("r.html"),
                            "--index-threshold", "0.08", "--cell-max=12.5", "--jobs", "2", "--fix-geometry",
                            "axisOutOfPlane", "--formula", "Si O2"});
        s_record = record();
    }
    static void TearDownTestSuite() { s_pDir.reset(); }
    void SetUp() override { ASSERT_EQ(s_first.nStatus, 0) << s_first.strText.toStdString(); }

    static QString path(const QString& strFile) { return s_pDir->filePath(strFile); }
    static QJsonObject record() { return jsonOf(path(g_strName + ".run.json")); }

    static std::unique_ptr<QTemporaryDir> s_pDir;
    static BatchOutcome s_first;
    static QJsonObject s_record;  ///< of the first run
};

std::unique_ptr<QTemporaryDir> Provenance::s_pDir;
BatchOutcome Provenance::s_first;
QJsonObject Provenance::s_record;

}  // namespace

TEST_F(Provenance, TheRecordHasTheCheckSumsOfSha256sum)
{
    const QJsonObject object = s_record, inputs = object["inputs"].toObject();
    const QJsonArray arrayFrame = inputs["frames"].toArray(), arrayWritten = object["files"].toArray();
    EXPECT_EQ(arrayFrame.size(), g_nFrames);
    EXPECT_EQ(inputs["files"].toArray().size(), 1);
    QStringList listWritten;
    int nChecked = 0;
    for (const QJsonArray& array : {arrayFrame, inputs["files"].toArray(), arrayWritten}) {
        for (const QJsonValue& value : array) {
            const QJsonObject file = value.toObject();
            const QString strPath = file["path"].toString();
            QProcess process;
            const BatchOutcome sum = outcomeOf(process, "sha256sum", {"--zero", strPath});
            EXPECT_EQ(file["sha256"].toString(), sum.strText.left(64)) << strPath.toStdString();
            EXPECT_EQ(qint64(file["size"].toDouble()), QFileInfo(strPath).size());
            EXPECT_EQ(QDateTime::fromString(file["changed"].toString(), Qt::ISODateWithMs),
                      QFileInfo(strPath).lastModified());
            ++nChecked;
        }
    }
    EXPECT_GE(nChecked, g_nFrames + 1 + 15);
    const QJsonObject summary = jsonOf(path("s.json"));
    EXPECT_EQ(object["parameters"].toObject()["cell-max"].toObject()["value"].toDouble(), 12.5);
    const double dfRadius = object["parameters"].toObject()["peak-radius"].toObject()["value"].toDouble();
    EXPECT_EQ(dfRadius, summary["peakRadius"].toDouble());
    QStringList listStage;
    for (const QJsonValue& value : object["stages"].toArray()) {
        const QJsonObject stage = value.toObject();
        listStage.append(stage["name"].toString());
        const QJsonObject found = stage["found"].toObject();
        for (auto it = found.begin(); it != found.end(); ++it) {
            EXPECT_EQ(it.value(), summary[it.key()]) << it.key().toStdString();
        }
        EXPECT_FALSE(found.isEmpty());
        const QJsonObject judgement = stage["judgement"].toObject();
        for (auto it = judgement.begin(); it != judgement.end(); ++it) {
            EXPECT_EQ(it.value(), summary["judgement"].toObject()[it.key()]);
        }
    }
    EXPECT_EQ(listStage.join(' '), "shifts peaks merge cell index geometry integrate");
}

TEST_F(Provenance, TheCommandOfTheRecordMakesTheSameFilesAndItself)
{
    ASSERT_TRUE(QFile::exists(path("hotpixels.txt")));
    const QJsonObject first = s_record;
    QMap<QString, QByteArray> mapBytes;
    for (const QJsonValue& file : first["files"].toArray()) {
        const QString strFile = file.toObject()["path"].toString();
        if (!strFile.endsWith(".log")) {
            mapBytes[strFile] = readBytes(strFile);
            if (!strFile.endsWith("hotpixels.txt")) {
                ASSERT_TRUE(QFile::remove(strFile)) << strFile.toStdString();
            }
        }
    }
    QTemporaryDir elsewhere;
    const BatchOutcome again = runShell(elsewhere.path(), first["command"].toString());
    ASSERT_EQ(again.nStatus, 0) << again.strText.toStdString();
    for (auto it = mapBytes.begin(); it != mapBytes.end(); ++it) {
        EXPECT_EQ(readBytes(it.key()), it.value()) << it.key().toStdString();
    }
    EXPECT_TRUE(QDir(elsewhere.path()).isEmpty());  // and nothing that a name of a file says
    QJsonArray listFirst = first["arguments"].toArray();
    EXPECT_TRUE(listFirst.contains("--ignore-hot-pixels"));
    EXPECT_EQ(record()["arguments"].toArray(), listFirst);

    // A run that starts at a later stage keeps the record of the run whose files it did not replace, once.
    for (int n = 0; n < 3; ++n) {
        const BatchOutcome late = runBatch({path(g_strName + ".ed3d"), "--from", "integrate", "--jobs", "2"});
        ASSERT_EQ(late.nStatus, 0) << late.strText.toStdString();
        const QJsonArray arrayFormer = record()["former"].toArray();
        ASSERT_EQ(arrayFormer.size(), 2);  // the first of all has listed the hot pixels
        EXPECT_EQ(arrayFormer[0].toObject()["arguments"].toArray(), listFirst);
        EXPECT_EQ(record()["inputs"].toObject()["files"].toArray().size(), 5);  // project, hot pixels,
                                                                                // shifts, peaks and cell
    }
    EXPECT_EQ(runBatch({"--summary", path(g_strName + ".run.json"), path("s.json")})
                  .strText.contains("0 failed; 0 bad files"),
              true);
}

namespace {

/// One of nearly each option.
QStringList manyOptions(const QString& strOut)
{
    return {"--to=shifts",
            "--out=" + strOut,
            "--defects=off",
            "--known-cell=4.9,4.9,5.4,90,90,120",
            "--region=32,32,256",
            "--wavelength=0.0251",
            "--axis=-38.5",
            "--ellipse-azimuth=12.25",
            "--resolution-max=0.7",
            "--max-3d-length=33.5",
            "--cell-max=40",
            "--refine-dstar-low=0.3",
            "--apply-stretching=off",
            "--intensity-in-frames=point",
            "--intensity-through-frames=3d",
            "--setting=conventional",
            "--space-group=154",
            "--rotation=precession,0.5",
            "--formula=Si1O2",
            "--formula-units=3",
            "--d-min=0.9",
            "--laue=-3m1",
            "--fix-geometry=axis,centreX,centreY",
            "--export=scaled,pictures",
            "--export-folder=" + strOut,
            "--export-format=bmp",
            "--scale=0.25",
            "--volume-edge=100",
            "--volume-type=scaled",
            "--contrast-min=-3",
            "--contrast-max=1000",
            "--accept",
            "--window-defaults",
            "--statistics",
            "--constant-background",
            "--pair-list",
            "--no-profile",
            "--no-scale",
            "--jobs=1"};
}

}  // namespace

TEST_F(Provenance, EachOptionComesBackAsItWasGiven)
{
    const QStringList listGiven = manyOptions(path("o ut"));
    const BatchOutcome outcome = runBatch(listGiven + QStringList{path(g_strName + ".ed3d")});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    const QJsonObject object = jsonOf(path("o ut/" + g_strName + ".run.json"));
    QStringList listWant = listGiven + QStringList{"tessera-batch", path(g_strName + ".ed3d")}, listHave;
    for (const QJsonValue& value : object["arguments"].toArray()) {
        listHave.append(value.toString());
    }
    listWant.sort();
    listHave.sort();
    EXPECT_EQ(listHave.join('\n'), listWant.join('\n'));
    EXPECT_FALSE(object.contains("withoutOption"));
}

TEST_F(Provenance, TheReportIsAPageOfItsOwn)
{
    const QByteArray bytes = readBytes(path("r.html"));
    EXPECT_LT(bytes.size(), 2 << 20);
    const Page page = readPage(bytes);
    ASSERT_TRUE(page.bWellFormed);
    EXPECT_TRUE(bytes.startsWith("<!DOCTYPE html>"));
    EXPECT_EQ(page.strHeading, g_strName);
    EXPECT_FALSE(bytes.contains("<b>"));
    for (const char* pszElement : {"script", "b", "link", "iframe", "img", "a"}) {
        EXPECT_FALSE(page.mapElement.contains(pszElement)) << pszElement;
    }
    EXPECT_FALSE(bytes.contains("url("));
    // An element that HTML closes by an end tag alone must have one.
    const QRegularExpression closed("<(td|th|p|div|pre|dd|dt|h[1-6]|li|ul|dl|style|title|figure)( [^>]*)?/>");
    EXPECT_FALSE(closed.match(QString::fromUtf8(bytes)).hasMatch());
    ASSERT_EQ(page.listReference.size(), 3);
    for (const QString& strReference : page.listReference) {
        const QString strHead = "data:image/png;base64,";
        ASSERT_TRUE(strReference.startsWith(strHead));
        const QImage image = QImage::fromData(
            QByteArray::fromBase64(strReference.mid(strHead.size()).toLatin1()), "PNG");
        EXPECT_EQ(image.size(), QSize(320, 320));
    }
    EXPECT_EQ(page.listPre, QStringList{s_record["command"].toString()});
}

TEST_F(Provenance, TheReportHasTheFiguresOfTheSummary)
{
    const Page page = readPage(readBytes(path("r.html")));
    const QJsonObject summary = jsonOf(path("s.json")), quality = summary["quality"].toObject();
    const auto hasRow = [&](const QStringList& listCell) {
        return std::any_of(page.listRow.begin(), page.listRow.end(), [&](const QStringList& listRow) {
            return std::all_of(listCell.begin(), listCell.end(),
                               [&](const QString& str) { return listRow.contains(str); });
        });
    };
    const QJsonArray arrayShell = quality["shells"].toArray();
    ASSERT_GT(arrayShell.size(), 5);
    for (const QJsonValue& value : arrayShell) {
        const QJsonObject shell = value.toObject();
        EXPECT_TRUE(hasRow({QString::number(shell["observed"].toInt()),
                            QString::number(shell["rInt"].toDouble(), 'f', 3),
                            QString::number(shell["ccHalf"].toDouble(), 'f', 3)}));
    }
    const QJsonObject judgement = summary["judgement"].toObject();
    for (auto it = judgement.begin(); it != judgement.end(); ++it) {
        if (it.key() != "overall") {
            EXPECT_TRUE(hasRow({it.key(), it.value().toObject()["verdict"].toString(),
                                it.value().toObject()["reason"].toString()}))
                << it.key().toStdString();
        }
    }
    const QJsonArray arrayGroup = quality["spaceGroups"].toArray();
    ASSERT_FALSE(arrayGroup.isEmpty());
    EXPECT_TRUE(hasRow({arrayGroup[0].toObject()["name"].toString(),
                        QString::number(arrayGroup[0].toObject()["likelihood"].toDouble(), 'f', 2)}));
    for (const char* pszPlot : {"Drift of the direct beam", "Peaks on the frames", "Scale of the frames"}) {
        EXPECT_EQ(page.mapPoints[pszPlot], g_nFrames) << pszPlot;
    }
    EXPECT_GT(page.mapPoints["Residuals of the refined geometry"], g_nFrames / 2);
    EXPECT_EQ(page.mapPoints["Agreement by resolution"], arrayShell.size());
}

TEST(FileFacts, AreThoseOfTheDiskAndAStopLeavesTheHashesOut)
{
    QTemporaryDir dir;
    const QString strFile = writeBytes(dir.filePath("abc"), "abc"), strNone = dir.filePath("none");
    const std::vector<FileFacts> list = factsOfFiles({strFile, strNone, dir.path()}, 3);
    ASSERT_EQ(list.size(), 3U);
    // FIPS 180-4, the example of one block.
    EXPECT_EQ(list[0].bytesSha256.toHex(),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(list[0].nSize, 3);
    EXPECT_EQ(list[1].nSize, -1);
    EXPECT_TRUE(list[1].bytesSha256.isEmpty());
    EXPECT_TRUE(list[2].bytesSha256.isEmpty());
    QFile large(dir.filePath("large"));  // a hole of 4 GB takes seconds to read
    ASSERT_TRUE(large.open(QIODevice::WriteOnly));
    ASSERT_TRUE(large.resize(qint64(4) << 30));
    const std::vector<FileFacts> stopped = factsOfFiles({large.fileName()}, 1, [](int) { return false; });
    EXPECT_TRUE(stopped[0].bytesSha256.isEmpty());
    EXPECT_EQ(stopped[0].nSize, qint64(4) << 30);
    EXPECT_TRUE(factsOfFiles({}, 2).empty());
}

TEST(ShellQuoted, IsOneWordOfTheShellWhateverItHolds)
{
    QTemporaryDir dir;
    for (const QString& strWord : {QString("plain-1.mrc"), QString("it's"), QString("a  b\n$HOME `id` \\"),
                                   QString("*"), QString(), QString("é~#!")}) {
        const BatchOutcome outcome = runShell(dir.path(), "printf '[%s]' " + shellQuoted(strWord));
        EXPECT_EQ(outcome.strText, "[" + strWord + "]");
    }
}

}  // namespace tessera
