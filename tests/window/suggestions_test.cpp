// Numbers, masks and the rotation axis that the window takes from the data, held against what was simulated.
#include "tests/window/reciprocaltest.h"
#include "window/pages/suggestiondialog.h"

#include <qwt_plot.h>
#include <qwt_plot_curve.h>

namespace tessera {

namespace {

const double g_dfSigma = 1.5;   // pixels: a spot, as the simulator draws it
const double g_dfAxis = -38.5;  // degrees: its axis

class Suggesting : public Reciprocal {
protected:
    double peakRadius() const { return m_pSearch->m_pPeakRadiusSpin->value(); }
    /// The answers of dialogs that come while a button is clicked, and their titles.
    static QStringList clicked(QPushButton* pButton, const QVariantList& listAnswer)
    {
        return answered(listAnswer, [&] { pButton->click(); });
    }
    void openWithoutAxis()
    {
        const QByteArray bytes = readBytes(file("w.ed3d"));
        const int nLine = bytes.indexOf("ROTATIONAXIS");
        write("w.ed3d", QByteArray(bytes).remove(nLine, bytes.indexOf('\n', nLine) + 1 - nLine));
        for (const QString& strFile : QDir(file("")).entryList({"w_*", "w.pk", "w.sc"})) {
            QFile::copy(file(strFile), path(strFile));
        }
        m_pWindow->openFiles({path("w.ed3d")});
    }
};

/// A series of pictures with hot pixels and a dead column, in the folder of the test.
class Defective : public WindowTest {
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        simulate(m_dir.path(), "--frames 12 --size 192 --pixel-size 0.01 --format png8");
        for (const QString& strFile : pictures()) {
            QImage image(path(strFile));
            for (int y = 0; y < image.height(); ++y) {
                image.scanLine(y)[g_nDead] = 3;
            }
            ASSERT_TRUE(image.save(path(strFile)));
        }
        m_listHot = linesOf("hotpixels.txt");
        QFile::remove(path("hotpixels.txt"));
        m_pWindow->openFiles({path("w.ed3d")});
    }
    QStringList pictures() const { return QDir(m_dir.path()).entryList({"w_*.png"}); }
    QStringList find(const QVariantList& listAnswer) const
    {
        return answered(listAnswer, [this] { m_pSearch->m_pFindDefectsButton->click(); });
    }
    /// "x y" of lines "serial x y", in any order.
    static QSet<QString> places(const QStringList& listLine)
    {
        QSet<QString> set;
        for (const QString& strLine : listLine) {
            set.insert(strLine.section(' ', 1));
        }
        return set;
    }

    static const int g_nDead = 50;
    QStringList m_listHot;  ///< lines of the simulator's file
};

}  // namespace

TEST_F(Suggesting, NumbersOfThePeakSearchAreSetOnlyOnApply)
{
    open();
    m_pSearch->m_pPeakRadiusSpin->setValue(5);
    const double dfThreshold = m_pSearch->m_pThresholdSpin->value();
    EXPECT_EQ(clicked(m_pSearch->m_pSuggestButton, {}).join(','), "Suggested Numbers: Peak Search");
    EXPECT_EQ(peakRadius(), 5);
    EXPECT_EQ(lines("None of the suggested numbers was taken.", Qt::black), 1);
    EXPECT_EQ(m_pSearch->m_pSuggestButton->text(), "Suggest...") << "it is no button of a run";

    clicked(m_pSearch->m_pSuggestButton, {true});
    EXPECT_NEAR(peakRadius(), g_dfSigma, 0.1);
    EXPECT_GT(m_pSearch->m_pBackgroundRadiusSpin->value(), 2 * g_dfSigma);
    EXPECT_LE(m_pSearch->m_pIntegrationRadiusSpin->value(), 3 * g_dfSigma + 1);
    EXPECT_GT(m_pSearch->m_pThresholdSpin->value(), 0);
    EXPECT_NE(m_pSearch->m_pThresholdSpin->value(), dfThreshold);
    EXPECT_EQ(lines("Peak Radius is now 1", Qt::black), 1) << log().toStdString();
    EXPECT_EQ(lines("2D Integration, Radius is now", Qt::black), 1) << log().toStdString();

    // A second click is the wish to stop, and brings no dialog.
    m_pSearch->m_pPeakRadiusSpin->setValue(5);
    answered({}, [this] {
        QTimer::singleShot(0, m_pSearch->m_pSuggestButton, &QPushButton::click);
        m_pSearch->m_pSuggestButton->click();
    });
    EXPECT_EQ(lines("The look at the frames did not finish."), 1);
    EXPECT_EQ(peakRadius(), 5);
}

TEST_F(Suggesting, WithoutFramesARedLineSaysSo)
{
    for (QPushButton* pButton : {m_pSearch->m_pSuggestButton, m_pSearch->m_pFindDefectsButton}) {
        EXPECT_TRUE(clicked(pButton, {}).isEmpty());
    }
    m_pSearch->m_pAutoRadiiCheck->setChecked(true);
    EXPECT_EQ(lines("There are no frames to look at"), 2);
    EXPECT_TRUE(clicked(m_pMerging->m_pButtonSuggest, {}).isEmpty());
    EXPECT_TRUE(clicked(m_pCell->m_pButtonSuggest, {}).isEmpty());
    EXPECT_EQ(lines("The data tell no number of"), 2);
    m_pActions->m_pFindRotationAxis->trigger();
    EXPECT_EQ(lines("needs peaks and shifts of all frames"), 1);
}

TEST_F(Suggesting, AutoMeasuresTheRadiiAtOnceAndBeforeEachHunt)
{
    open();
    m_pSearch->m_pPeakRadiusSpin->setValue(5);
    m_pSearch->m_pThresholdSpin->setValue(3);
    m_pSearch->m_pAutoRadiiCheck->click();
    EXPECT_FALSE(m_pSearch->m_pPeakRadiusSpin->isEnabled());
    EXPECT_FALSE(m_pSearch->m_pBackgroundRadiusSpin->isEnabled());
    EXPECT_NEAR(peakRadius(), g_dfSigma, 0.1);

    m_pSearch->m_pPeakRadiusSpin->setValue(5);  // as of another series
    m_pSearch->m_pRunButton->click();
    EXPECT_NEAR(peakRadius(), g_dfSigma, 0.1);
    EXPECT_EQ(lines("Peak hunting finished", Qt::blue), 1);
    const QByteArray bytesAuto = readBytes(file("w.pk"));
    m_pSearch->m_pAutoRadiiCheck->click();
    EXPECT_TRUE(m_pSearch->m_pPeakRadiusSpin->isEnabled());
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(readBytes(file("w.pk")), bytesAuto) << "the boxes do not show what was hunted with";
    m_pSearch->m_pPeakRadiusSpin->setValue(5);
    m_pSearch->m_pRunButton->click();
    EXPECT_NE(readBytes(file("w.pk")), bytesAuto);

    m_pSearch->m_pAutoRadiiCheck->click();
    m_pWindow->close();
    newWindow();
    EXPECT_TRUE(m_pSearch->m_pAutoRadiiCheck->isChecked());
    EXPECT_FALSE(m_pSearch->m_pPeakRadiusSpin->isEnabled());
}

TEST_F(Suggesting, LimitsOfTheMergingLetEveryPeakThrough)
{
    open();
    const int nPeaks = m_pRaw->points().size();
    m_pMerging->m_pSpinResolutionMax->setValue(0.3);
    m_pMerging->m_pSpinIntensityMax->setValue(100);
    ASSERT_LT(m_pRaw->points().size(), nPeaks);
    clicked(m_pMerging->m_pButtonSuggest, {true});
    EXPECT_EQ(m_pRaw->points().size(), int(readBytes(file("w.pk")).count('\n')));
    // The farthest corner is 96 to 101 pixels of 0.01 Å⁻¹ away in both directions.
    EXPECT_GT(m_pMerging->m_pSpinResolutionMax->value(), 1.2);
    EXPECT_LT(m_pMerging->m_pSpinResolutionMax->value(), 1.6);

    m_pMerging->m_pButtonMerge->click();
    clicked(m_pCell->m_pButtonSuggest, {true});
    EXPECT_GT(m_pCell->m_pSpinCellRangeMax->value(), 5.4);  // Å: c of quartz
    EXPECT_LT(m_pCell->m_pSpinCellRangeMax->value(), 15);
}

TEST(SuggestionDialog, LeavesTheChoiceToTheUser)
{
    SuggestionDialog dialog("Numbers", {{"one", "1", "2", "of this"},
                                        {"two", "5", "5", "as it is"},
                                        {"three", "7", "8", QString("long ").repeated(60)}});
    EXPECT_EQ(dialog.chosen(), QList<int>({0, 2}));
    EXPECT_FALSE(dialog.m_pTable->item(1, 0)->flags() & Qt::ItemIsUserCheckable);
    dialog.show();
    const QRect rcLast = dialog.m_pTable->visualItemRect(dialog.m_pTable->item(2, 3));
    EXPECT_TRUE(dialog.m_pTable->viewport()->rect().contains(rcLast)) << "a reason is cut off";
    dialog.m_pTable->item(0, 0)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(dialog.chosen(), QList<int>({2}));
    EXPECT_TRUE(dialog.m_pApplyButton->isEnabled());
    dialog.m_pTable->item(2, 0)->setCheckState(Qt::Unchecked);
    EXPECT_FALSE(dialog.m_pApplyButton->isEnabled());
}

TEST_F(Defective, ColumnsBecomeMasksAndHotPixelsAreRepairedAndListed)
{
    const QStringList listAsked = find({QMessageBox::Yes});
    ASSERT_EQ(listAsked.size(), 1) << log().toStdString();
    EXPECT_TRUE(listAsked[0].contains("hot pixels were found")) << listAsked[0].toStdString();
    EXPECT_EQ(lines("columns 50, dead or made from their neighbours", Qt::black), 1) << log().toStdString();
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 1);
    const auto listArea = marks<QGraphicsPolygonItem>(Qt::yellow);
    ASSERT_EQ(listArea.size(), 1);
    EXPECT_TRUE(listArea[0]->polygon().containsPoint({g_nDead, 100}, Qt::OddEvenFill));
    EXPECT_FALSE(listArea[0]->polygon().containsPoint({g_nDead + 1, 100}, Qt::OddEvenFill));
    const QSet<QString> setFound = places(linesOf("hotpixels.txt"));
    EXPECT_TRUE(places(m_listHot).contains(setFound)) << "sound pixels are repaired";
    EXPECT_GE(setFound.size(), m_listHot.size() - 1) << log().toStdString();
    EXPECT_EQ(m_pSearch->m_pFindDefectsButton->text(), "Find Defects");

    // Again: what is repaired is none any more, and the area is there already.
    EXPECT_TRUE(find({}).isEmpty());
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 1);
}

TEST_F(Defective, AskBeforeTheyJoinAMaskAndChangeNothingOnNo)
{
    answered({write("mine.msk", "1 10 10\n1 20 10\n1 20 20\n")},
             [this] { m_pSearch->m_pLoadMaskButton->click(); });
    EXPECT_EQ(find({QMessageBox::No, QMessageBox::No}).size(), 2);
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 1);
    EXPECT_FALSE(QFile::exists(path("hotpixels.txt")));
    EXPECT_EQ(lines("The mask stays as it was", Qt::black), 1);
    const auto nShown = [this] { return marks<QGraphicsPolygonItem>(Qt::yellow).size(); };
    // A list that is there is added to; one that is not understood stays as it is.
    write("hotpixels.txt", "# mine\n1 3 4");
    find({QMessageBox::Yes, QMessageBox::Yes});
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 2);
    const QStringList listLine = linesOf("hotpixels.txt");
    EXPECT_GE(listLine.size(), 1 + m_listHot.size());
    EXPECT_EQ(listLine.mid(0, 2), QStringList({"# mine", "1 3 4"}));
    const int nPixels = listLine.size() - 1;
    EXPECT_EQ(listLine.last().section(' ', 0, 0).toInt(), nPixels);

    EXPECT_EQ(nShown(), 2);
    m_pSearch->m_pMaskTable->selectRow(0);
    m_pSearch->m_pRemoveAreasAction->trigger();
    EXPECT_EQ(m_pSearch->m_pMaskTable->rowCount(), 1);
    ASSERT_EQ(nShown(), 1);
    EXPECT_FALSE(marks<QGraphicsPolygonItem>(Qt::yellow)[0]->polygon().contains({10, 10}))
        << "the other went";

    m_pWindow->openFiles({path("w.ed3d")});  // which reads the list
    EXPECT_EQ(lines(QString::number(nPixels) + " hot pixel positions loaded.", Qt::black), 1);
    write("hotpixels.txt", "7 1 1\n");
    m_pWindow->openFiles({path("w.ed3d")});
    find({QMessageBox::Yes});
    EXPECT_EQ(linesOf("hotpixels.txt"), QStringList("7 1 1"));
    EXPECT_EQ(lines("they could not be written"), 1);
}

TEST_F(Suggesting, AnUnknownAxisIsToldFoundAndTaken)
{
    m_pFrames->m_pRotationAxisSpin->setValue(20);
    openWithoutAxis();
    const QString strPage = QLocale::system().toString(20.0, 'f', 1) + "°";
    EXPECT_EQ(lines("the rotation axis is not known, and " + strPage + " is but the number of the page"), 1)
        << log().toStdString();
    ASSERT_GT(m_pRaw->points().size(), 100);
    const Peak3D peakBefore = m_pRaw->points().last();
    const auto search = [&](int nAnswer) {
        return answered({nAnswer}, [this] { m_pActions->m_pFindRotationAxis->trigger(); });
    };
    const QStringList listAsked = search(QMessageBox::No);
    ASSERT_EQ(listAsked.size(), 1);
    for (const QString& strText :
         {strPage + " now", QString("The second maximum"), QString("The sense of")}) {
        EXPECT_TRUE(listAsked[0].contains(strText)) << listAsked[0].toStdString();
    }
    EXPECT_EQ(m_pFrames->m_pRotationAxisSpin->value(), 20);

    auto* pPlot = m_pWindow->findChild<QwtPlot*>(QStringLiteral("curvePlot"));
    EXPECT_TRUE(pPlot->axisTitle(QwtPlot::xBottom).text().startsWith("Azimuth"));
    const auto* pCurve = dynamic_cast<QwtPlotCurve*>(pPlot->itemList(QwtPlotItem::Rtti_PlotCurve).value(0));
    ASSERT_TRUE(pCurve);
    QPointF ptBest;
    for (size_t i = 0; i < pCurve->dataSize(); ++i) {
        ptBest = pCurve->sample(int(i)).y() > ptBest.y() ? pCurve->sample(int(i)) : ptBest;
    }
    EXPECT_NEAR(ptBest.x(), g_dfAxis, 3);

    search(QMessageBox::Yes);
    EXPECT_NEAR(m_pFrames->m_pRotationAxisSpin->value(), g_dfAxis, 1);
    const Peak3D peakAfter = m_pRaw->points().last();
    EXPECT_GT(std::hypot(peakAfter.fX3D - peakBefore.fX3D, peakAfter.fY3D - peakBefore.fY3D), 0.01)
        << "the points are those of the former axis";
    m_pLog->clear();
    m_pMerging->m_pButtonMerge->click();
    m_pTable->clicked(m_pTable->model()->index(0, 0));
    EXPECT_EQ(pPlot->axisTitle(QwtPlot::xBottom).text(), "Frame No.");
    m_pSearch->m_pRunButton->click();
    EXPECT_EQ(lines("the rotation axis is not known"), 0);
}

}  // namespace tessera
