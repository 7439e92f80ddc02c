// The groups that merging and indexing make, and the reflections that the user chooses by them.
#include "frameview/textitem.h"
#include "tests/window/reciprocaltest.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <set>

namespace tessera {

namespace {

class IndexingWindow : public Reciprocal {
protected:
    void SetUp() override
    {
        Reciprocal::SetUp();
        open();
    }
    /// Merges, and parts the merged points into groups: 1, of two thirds, and 2. Returns the size of the
    /// latter.
    int mergeIntoGroups()
    {
        m_pMerging->m_pButtonMerge->click();
        QList<int> aPart[2];
        for (int i = 0; i < m_pMerged->points().size(); ++i) {
            aPart[i % 3 == 0].append(i);
        }
        for (int i : {0, 1}) {
            m_pMerged->insertPointGroup(1 + i, QString::number(i), aPart[i], Qt::blue);
        }
        return aPart[1].size();
    }
    /// Whether both views show the lattice, and how much of it.
    QString lattices() const
    {
        QStringList list;
        for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
            int an[3];
            pView->getLatticeRange(an[0], an[1], an[2]);
            list.append(QString::asprintf("%d %d %d %d", pView->showLatticeLines(), an[0], an[1], an[2]));
        }
        return list.join(", ");
    }
    void hideLattices()
    {
        for (ED3DWidget* pView : {m_pRaw, m_pMerged}) {
            pView->setShowLatticeLines(false);
            pView->setLatticeRange(3, 3, 3);
        }
    }
    /// The addresses behind the links of the log.
    QString links() const
    {
        QString strHref;
        for (QTextBlock block = m_pLog->document()->begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                strHref += it.fragment().charFormat().anchorHref() + '\n';
            }
        }
        return strHref;
    }
    /// The labels of each frame by the list of indexed peaks, "h,k,l x y colour". Magenta and dark cyan are
    /// absent in C 2; magenta and red lie on the frame of the row in the table.
    QMap<int, QStringList> listedLabels() const
    {
        QMap<QString, int> mapStrongest;
        for (int i = 0; i < table()->rowCount(); ++i) {
            const auto text = [&](int nColumn) { return table()->index(i, nColumn).data().toString(); };
            mapStrongest[text(4) + ',' + text(5) + ',' + text(6)] = text(11).toInt();
        }
        QMap<int, QStringList> mapLabel;
        const QStringList listLine =
            QString::fromLatin1(readBytes(file("w.ipf"))).split('\n', Qt::SkipEmptyParts);
        for (const QString& strLine : listLine.mid(1)) {
            const QStringList list = strLine.simplified().split(' ');
            const QString strHkl = list.mid(1, 3).join(',');
            const bool bAbsent = (list[1].toInt() + list[2].toInt()) % 2 != 0;
            const bool bStrongest = mapStrongest.value(strHkl) == list[0].toInt();
            const QColor color(bStrongest ? bAbsent ? Qt::magenta : Qt::red
                               : bAbsent  ? Qt::darkCyan
                                          : Qt::green);
            mapLabel[list[0].toInt()] << strHkl + ' ' + list[5] + ' ' + list[6] + ' ' + color.name();
        }
        return mapLabel;
    }
    /// Those on the frame in view, in the same form.
    QStringList labelsInView() const
    {
        QStringList listLabel;
        for (QGraphicsItem* pItem : m_pScene->items()) {
            if (const auto* p = dynamic_cast<TextItem*>(pItem); p && p->text().count(',') == 2) {
                listLabel << QStringLiteral("%1 %2 %3 %4")
                                 .arg(p->text())
                                 .arg(int(p->x()))
                                 .arg(int(p->y()))
                                 .arg(p->brush().color().name());
            }
        }
        return listLabel;
    }
};

}  // namespace

TEST_F(IndexingWindow, StreaksAreAGroupAndTheMergedViewTakesTheCamera)
{
    m_pMerging->m_pSpinMax3DLength->setValue(1.2);
    m_pRaw->setCamera(std::array<float, 16>{0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0, 1}.data(), 0.1f,
                      0.2f, -0.5f);
    m_pMerging->m_pButtonMerge->click();
    EXPECT_EQ(m_pTabs->currentIndex(), 2);
    const int nMerged = table()->rowCount(), nShown = m_pMerged->points().size();
    EXPECT_GT(nMerged, 5);
    EXPECT_GT(nShown, nMerged);
    EXPECT_EQ(groups(m_pMerged),
              QStringLiteral("Unlabeled %1 #ffffff, Streaks %2 #00ffff").arg(nMerged).arg(nShown - nMerged));
    float af[16], fPanX, fPanY, fZoom;
    m_pMerged->getCamera(af, fPanX, fPanY, fZoom);
    EXPECT_EQ(std::vector<float>({af[1], af[6], af[8], fPanX, fPanY, fZoom}),
              std::vector<float>({1, 1, 1, 0.1f, 0.2f, -0.5f}));
}

// Whether their group is shown or not.
TEST_F(IndexingWindow, OnlyPeaksWithinTheLimitsAreMerged)
{
    const int nPeaks = readBytes(file("w.pk")).count('\n');
    m_pMerging->m_pSpinMax3DLength->setValue(1000);
    m_pMerging->m_pSpinResolutionMax->setValue(0.6);
    m_pTabs->setCurrentIndex(1);
    m_pWindow->pointGroupTableCellClicked(0, 3);
    EXPECT_FALSE(m_pRaw->groupsVisible()[0]);
    m_pMerging->m_pButtonMerge->click();
    EXPECT_EQ(groups(m_pMerged), QStringLiteral("Unlabeled %1 #ffffff").arg(m_pMerged->points().size()));
    EXPECT_GT(m_pMerged->points().size(), 10);
    for (const Peak3D& peak : m_pMerged->points()) {
        EXPECT_LT(peak.dfDStar, 0.61);
    }
    EXPECT_EQ(lines(QStringLiteral("%1 peaks lie outside").arg(nPeaks - m_pRaw->points().size()), Qt::black),
              1);
}

// Chains cut short by a small distance give reflections twice. The driver counts.
TEST_F(IndexingWindow, HasTheGroupsThatTheDriverCounts)
{
    m_pMerging->m_pSpinMax3DLength->setValue(1000);
    m_pMerging->m_pSpinMax2DDistance->setValue(0.5);
    m_pMerging->m_pButtonMerge->click();
    const QString strJson = file("w.json");
    const BatchOutcome outcome = runBatch({"--window-defaults", "--from", "index", "--max-2d-distance", "0.5",
                                           "--out", file("driver"), "--json", strJson, file("w.ed3d")});
    const QJsonObject json = QJsonDocument::fromJson(readBytes(strJson)).object();
    const auto count = [&](const char* pszKey) { return json[QLatin1String(pszKey)].toInt(); };
    ASSERT_GT(std::min({count("duplicated"), count("unindexed"), count("onEdge"), count("indexed")}), 0)
        << outcome.strText.toStdString();
    m_pCell->m_pCheckOutputStatistics->setChecked(true);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    EXPECT_EQ(
        groups(m_pMerged).toStdString(),
        QString::asprintf("Unlabeled %d #ffffff, Duplicated %d #00ff00, Unindexed %d #ff0000, On edge %d "
                          "#ff00ff",
                          count("indexed"), count("duplicated"), count("unindexed"), count("onEdge"))
            .toStdString());
    EXPECT_EQ(m_pCell->m_pTableReflectionSelection->rowCount(), 4);
    EXPECT_EQ(table()->rowCount(), count("indexed"));
    int nIndexed = 0;
    for (const Peak3D& peak : m_pMerged->points()) {
        nIndexed += peak.dfH != 0 || peak.dfK != 0 || peak.dfL != 0;
    }
    EXPECT_GT(nIndexed, count("indexed"));
}

TEST_F(IndexingWindow, NothingIsSearchedInAnEmptyGroup)
{
    mergeIntoGroups();
    hideLattices();
    m_pCell->m_pTableReflectionSelection->selectRow(0);  // whose reflections have all gone
    m_pCell->m_pButtonSearchCell->click();
    EXPECT_EQ(lines("No reflections were selected for unit cell hunting.", Qt::black), 1);
    EXPECT_EQ(lattices(), "0 3 3 3, 0 3 3 3");
    EXPECT_TRUE(m_pCell->m_pButtonSearchCell->isEnabled());
}

TEST_F(IndexingWindow, ASearchShowsItsLatticeInBothViews)
{
    hideLattices();
    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pButtonSearchCell->click();
    EXPECT_EQ(lattices(), "1 1 1 1, 1 1 1 1");
}

TEST_F(IndexingWindow, LinksGoToTheHostOfTheSettings)
{
    QSettings(QStringLiteral("Lumenarc"), QStringLiteral("Tessera"))
        .setValue("latticeServiceHost", "http://lattice%1:81");
    newWindow();
    open();
    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pButtonTest->click();
    m_pCell->m_pButtonSearchCell->click();
    EXPECT_EQ(links().count("http://lattice%1:81/"), 2) << "of the test and the search\n"
                                                        << links().toStdString();
}

// The other space, chosen while a run uses the cell under test, ends the test after the run.
TEST_F(IndexingWindow, ARunKeepsTheCellUnderTestToItsEnd)
{
    const int nInGroup = mergeIntoGroups();
    const QString strCell = fields();
    type({{{2, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
    m_pCell->m_pButtonTest->click();
    const QString strTried = fields();
    QString strInRun;
    QTimer::singleShot(0, [&] {
        EXPECT_FALSE(m_pCell->m_pButtonIndexMergedPeaks->isEnabled());
        EXPECT_NE(QApplication::overrideCursor(), nullptr);
        m_pCell->m_pRadioSpaceReal->click();
        strInRun = fields();
    });
    m_pCell->m_pTableReflectionSelection->selectRow(2);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    EXPECT_EQ(lines(QStringLiteral(" out of %1 (").arg(nInGroup), Qt::black), 1);
    EXPECT_EQ(strInRun, strTried);
    EXPECT_NE(strTried, strCell);
    EXPECT_EQ(fields(), strCell);
    EXPECT_TRUE(m_pCell->m_pButtonIndexMergedPeaks->isEnabled());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

// They stand where the list of indexed peaks has them, in the colours that the table gives.
TEST_F(IndexingWindow, LabelsOnTheFramesAreThoseOfTheListOfIndexedPeaks)
{
    m_pMerging->m_pButtonMerge->click();
    m_pCell->m_pComboReflectionGrouping->setCurrentIndex(4);  // C 2
    m_pCell->m_pCheckOutputIndexing->setChecked(true);
    m_pActions->m_pShowPeakLabels->setChecked(true);
    m_pTabs->setCurrentIndex(0);
    m_pCell->m_pButtonIndexMergedPeaks->click();
    const QMap<int, QStringList> mapWanted = listedLabels();
    std::set<QString> setColor;
    for (int nFrame = 1; nFrame <= 31; ++nFrame) {
        if (nFrame > 1) {  // the frame in view was labelled by the run
            m_pWindow->switchToImgIndex(nFrame);
        }
        QStringList listLabel = labelsInView(), listWanted = mapWanted[nFrame];
        listLabel.sort();
        listWanted.sort();
        EXPECT_EQ(listLabel, listWanted) << nFrame;
        for (const QString& strLabel : listWanted) {
            setColor.insert(strLabel.section(' ', -1));
        }
    }
    EXPECT_EQ(setColor.size(), 4u) << "each colour comes";
}

}  // namespace tessera
