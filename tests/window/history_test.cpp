// Undo and redo of each kind of step, by what views, tables, pages and files show; and who gets the keys.
#include "tests/window/reciprocaltest.h"
#include "window/crystal/geometrydialog.h"
#include "window/history/stepslist.h"
#include "window/history/workhistory.h"

#include <random>

namespace tessera {

namespace {

typedef QMap<QString, QByteArray> Picture;

/// The parts that differ.
QString differing(const Picture& a, const Picture& b)
{
    QStringList list;
    for (const QString& strPart : a.keys()) {
        if (a[strPart] != b[strPart]) {
            list.append(strPart);
        }
    }
    return list.join(", ");
}

class History : public Reciprocal {
protected:
    void SetUp() override
    {
        Reciprocal::SetUp();
        m_pHistory = m_pWindow->findChild<WorkHistory*>();
        m_pList = m_pWindow->findChild<StepsList*>()->m_pList;
        open();
        m_pHistory->look();
    }
    /// All that the window shows and saves of the work, whatever its members say, part by part.
    Picture picture() const
    {
        Picture parts;
        QByteArray bytes;
        auto pStream = std::make_unique<QDataStream>(&bytes, QIODevice::WriteOnly);
        const auto endPart = [&](const QString& strPart) {
            parts[strPart] = bytes;
            bytes.clear();
            pStream = std::make_unique<QDataStream>(&bytes, QIODevice::WriteOnly);
        };
        for (const ED3DWidget* pView : {m_pRaw, m_pMerged}) {
            for (const Peak3D& peak : pView->points()) {
                *pStream << peak.fX3D << peak.fY3D << peak.fZ3D << peak.dfX2D << peak.dfH << peak.dfK
                         << peak.dfL << peak.nID << peak.nFrame << peak.dfIPoint;
            }
            *pStream << pView->groupLabels() << pView->groupColors() << pView->groupsVisible()
                     << pView->groupPoints();
            endPart(pView == m_pRaw ? "raw view" : "merged view");
        }
        for (int nRow = 0; nRow < table()->rowCount() && !m_pMerged->points().isEmpty(); ++nRow) {
            for (int nColumn = 0; nColumn < table()->columnCount(); ++nColumn) {
                *pStream << table()->index(nRow, nColumn).data().toString();
            }
        }
        endPart("table");
        // The boxes of the manual way follow the cell only where it is chosen, which is no step.
        const QList<const QAbstractSpinBox*> listManual = {
            m_pCell->m_pSpinManualLengthA, m_pCell->m_pSpinManualLengthB, m_pCell->m_pSpinManualLengthC};
        for (const QWidget* pPage :
             {(const QWidget*)m_pFrames, (const QWidget*)m_pShift, (const QWidget*)m_pSearch,
              (const QWidget*)m_pMerging, (const QWidget*)m_pCell, (const QWidget*)m_pRefine}) {
            for (const QAbstractSpinBox* pSpin : pPage->findChildren<QAbstractSpinBox*>()) {
                if (!listManual.contains(pSpin)) {
                    *pStream << pSpin->text();
                }
            }
            for (const QCheckBox* pCheck : pPage->findChildren<QCheckBox*>()) {
                *pStream << pCheck->isChecked();
            }
            for (const QTableWidget* pTable : pPage->findChildren<QTableWidget*>()) {
                for (int nRow = 0; nRow < pTable->rowCount(); ++nRow) {
                    *pStream << (pTable->item(nRow, 0) ? pTable->item(nRow, 0)->text() : QString());
                }
            }
        }
        endPart("pages");
        *pStream << m_pCell->m_pComboReflectionGrouping->currentIndex()
                 << m_pMerging->m_pGroupApplyStretching->isChecked() << m_pCell->m_pButtonTest->isChecked();
        for (const QLineEdit* pEdit : m_pCell->m_apEditCell) {
            *pStream << pEdit->text();
        }
        for (const auto& apRow : m_pCell->m_apEditMatrix) {
            for (const QLineEdit* pEdit : apRow) {
                *pStream << QLocale::system().toDouble(pEdit->text());
            }
        }
        endPart("cell page");
        const CImgObj<unsigned char>& image = *m_pScene->images()[0];
        *pStream << QByteArray(reinterpret_cast<const char*>(image.Data()), image.Width() * image.Height());
        *pStream << marks<QGraphicsPolygonItem>(Qt::yellow).size();
        answered({path("p.uc"), path("p.pk"), path("p.sc")}, [this] {
            m_pWindow->exportUnitCell();
            m_pWindow->saveRawPeaks();
            m_pWindow->saveEDShift();
        });
        endPart("frame");
        for (const char* pszFile : {"p.uc", "p.pk", "p.sc"}) {
            parts[pszFile] = readBytes(path(pszFile));
        }
        return parts;
    }
    int current() const { return m_pHistory->steps().current(); }
    QString name() const { return m_pHistory->steps().name(current()); }
    void group(ED3DWidget* pView, const QString& strLabel, const QList<int>& listPoint)
    {
        pView->insertPointGroup(pView->groupLabels().size(), strLabel, listPoint, Qt::blue);
    }
    /// A state with a change that no page makes without a dialog or good data.
    void change(const std::function<void(WorkState&)>& fn)
    {
        WorkState state = m_pWindow->workState();
        fn(state);
        ASSERT_TRUE(m_pWindow->showWorkState(state));
    }

    WorkHistory* m_pHistory = nullptr;
    QListWidget* m_pList = nullptr;
};

/// Each kind of step, one after the other.
class KindsOfSteps : public History {
protected:
    struct Kind {
        QString strName;  ///< that the step begins with
        std::function<void()> fnChange;
    };
    const Kind m_aKind[23] = {
        {"Threshold of peaks", [this] { m_pSearch->m_pThresholdSpin->setValue(3.5); }},
        {"Rotation axis", [this] { m_pFrames->m_pRotationAxisSpin->stepUp(); }},
        {"Stretching switched on", [this] { m_pMerging->m_pGroupApplyStretching->setChecked(true); }},
        {"Least d*", [this] { m_pMerging->m_pSpinResolutionMin->setValue(0.15); }},
        {"Groups: new, \"mine\"",
         [this] {
             group(m_pRaw, "mine", {1, 2, 3, 5});
         }},
        {"Greatest d*", [this] { m_pMerging->m_pSpinResolutionMax->setValue(0.6); }},
        {"Groups: \"mine\" hidden", [this] { m_pRaw->setGroupVisible(1, false); }},
        {"Direct beam, column",
         [this] { m_pShift->m_pCenterXSpin->setValue(m_pShift->m_pCenterXSpin->value() + 0.05); }},
        {"Areas of the mask: 1",
         [this] {
             answered({write("m.msk", "1 0 0\n1 40 0\n1 40 40\n")},
                      [this] { m_pWindow->loadPeakHuntingMask(); });
         }},
        {"Hot pixels: ",
         [this] {
             change([](WorkState& s) {
                 for (int x = 60; x < 130; ++x) {
                     s.series.m_listHotPixel.append(QPoint(x, 96));
                 }
             });
         }},
        {"Reflections: ", [this] { m_pWindow->peakReduction3D(); }},
        {"Cell ", [this] { loadCell(g_matCell); }},
        {"Cell ", [this] { m_pWindow->runUnitCellHunting(); }},
        {"Indexed: ", [this] { m_pWindow->runIndexing(); }},
        {"Groups: new, \"some\"",
         [this] {
             group(m_pMerged, "some", {0, 2});
         }},
        {"Matrix of the cell",
         [this] {
             type({{{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}});
         }},
        {"Test: Cell", [this] { m_pCell->m_pButtonTest->setChecked(true); }},
        {"Cell ", [this] { m_pWindow->transformUnitCellClicked(); }},
        {"Length of b*",
         [this] {
             m_pCell->m_pRadioCellManual->setChecked(true);
             m_pHistory->look();
             m_pCell->m_pSpinManualLengthB->setValue(0.123);
         }},
        {"Areas of the mask: 0", [this] { m_pWindow->clearPeakHuntingMask(); }},
        {"Peaks: ", [this] { m_pWindow->runPeakHunting(); }},
        {"Automatic range of edges", [this] { m_pCell->m_pCheckAutoRange->setChecked(true); }},
        {"Space group", [this] { m_pCell->m_pComboReflectionGrouping->setCurrentIndex(150); }},
    };
};

}  // namespace

TEST_F(KindsOfSteps, AreTakenBackAndDoneAgain)
{
    EXPECT_EQ(name(), "Opened w");
    EXPECT_FALSE(m_pActions->m_pUndo->isEnabled());
    EXPECT_FALSE(m_pActions->m_pRedo->isEnabled());
    QList<Picture> listPicture = {picture()};
    m_pHistory->look();
    for (const Kind& kind : m_aKind) {
        const int nBefore = current();
        kind.fnChange();
        m_pHistory->look();
        listPicture.append(picture());
        m_pHistory->look();
        ASSERT_EQ(current(), nBefore + 1) << qPrintable(kind.strName + " / " + name());
        EXPECT_TRUE(name().startsWith(kind.strName)) << qPrintable(name() + " for " + kind.strName);
        EXPECT_EQ(m_pActions->m_pUndo->text(), "&Undo " + name());
        ASSERT_NE(differing(listPicture.last(), listPicture[nBefore]), "") << qPrintable(name());
        m_pActions->m_pUndo->trigger();
        EXPECT_EQ(differing(picture(), listPicture[nBefore]), "") << "undone: " << qPrintable(kind.strName);
        m_pActions->m_pRedo->trigger();
        EXPECT_EQ(differing(picture(), listPicture.last()), "") << "done again: " << qPrintable(kind.strName);
        ASSERT_EQ(current(), nBefore + 1);
    }
    // All the way back, and in one go to the end.
    for (int n = listPicture.size() - 2; n >= 0; --n) {
        m_pActions->m_pUndo->trigger();
        EXPECT_EQ(differing(picture(), listPicture[n]), "") << n << ' ' << qPrintable(name());
    }
    EXPECT_FALSE(m_pActions->m_pUndo->isEnabled());
    m_pHistory->goTo(listPicture.size() - 1);
    EXPECT_EQ(differing(picture(), listPicture.last()), "");
    EXPECT_FALSE(m_pActions->m_pRedo->isEnabled());
}

/// Random changes, all of which are steps.
class RandomSteps : public History {
protected:
    double number(double dfFrom, double dfTo)
    {
        return dfFrom + (dfTo - dfFrom) * double(random() % 1000) / 1000;
    }
    void change()
    {
        switch (random() % 8) {
            case 0:
                return m_pFrames->m_pRotationAxisSpin->setValue(m_dfAxis + number(-0.3, 0.3));
            case 1:
                return m_pMerging->m_pSpinResolutionMax->setValue(number(0.3, 1));
            case 2:
                return group(m_pRaw, QString::number(random()), {int(random() % 50), int(random() % 50)});
            case 3:
                return m_pRaw->removePointGroups({int(random() % 3)});
            case 4:
                return m_pWindow->peakReduction3D();
            case 5:
                return m_pWindow->runIndexing();
            case 6:
                return loadCell({{{number(0.1, 0.2), 0, 0}, {0, 0.1, 0}, {0, 0.01, 0.2}}});
            default:
                return m_pSearch->m_pPeakRadiusSpin->setValue(number(2, 9));
        }
    }
    /// The table is made anew from what a state holds: peaks that were mapped again since then are in it.
    static Picture others(Picture picture)
    {
        picture.remove("table");
        return picture;
    }

    std::mt19937 random{7};
    double m_dfAxis = 0;
};

TEST_F(RandomSteps, AreTakenBackAndMadeAgain)
{
    m_dfAxis = m_pFrames->m_pRotationAxisSpin->value();
    QList<Picture> listPicture = {picture()};
    m_pHistory->look();
    while (current() < 50) {
        const int nBefore = current();
        change();
        m_pHistory->look();
        const Picture bytes = picture();
        m_pHistory->look();
        if (current() < nBefore) {  // a number that was turned on came back to where it was
            listPicture.removeLast();
            ASSERT_EQ(differing(bytes, listPicture.last()), "") << qPrintable(name());
        } else if (current() == nBefore) {  // nothing came of it, or a number was turned on
            listPicture.last() = bytes;
        } else {
            listPicture.append(bytes);
        }
        ASSERT_EQ(listPicture.size(), current() + 1);
    }
    for (int n = 49; n >= 0; --n) {
        m_pHistory->undo();
        ASSERT_EQ(differing(others(picture()), others(listPicture[n])), "") << n << ' ' << qPrintable(name());
    }
    for (int n = 1; n <= 50; ++n) {
        m_pHistory->redo();
        ASSERT_EQ(differing(others(picture()), others(listPicture[n])), "") << n << ' ' << qPrintable(name());
    }
    for (int i = 0; i < 10; ++i) {
        const int n = int(random() % 51);
        m_pHistory->goTo(n);
        ASSERT_EQ(differing(others(picture()), others(listPicture[n])), "") << n;
    }
}

TEST_F(History, TypingIsOneStepAndHasItsOwnUndo)
{
    activate();
    QDoubleSpinBox* pSpin = m_pFrames->m_pRotationAxisSpin;
    const QString strBefore = pSpin->text();
    const int nBefore = current();
    const auto type = [this](QWidget* pBox, const QString& strText) {
        for (const QChar ch : strText) {
            QTest::keyClick(pBox, ch.toLatin1());
            m_pHistory->look();
        }
    };
    pSpin->setFocus();
    pSpin->selectAll();
    type(pSpin, QString(QLocale::system().decimalPoint()) == "," ? "12,5" : "12.5");
    EXPECT_EQ(current(), nBefore + 1);
    EXPECT_TRUE(name().startsWith("Rotation axis ")) << qPrintable(name());
    EXPECT_TRUE(name().contains(" to 12")) << qPrintable(name());
    const double dfTyped = pSpin->value();
    QTest::keyClick(pSpin, Qt::Key_Z, Qt::ControlModifier);  // of the text
    m_pHistory->look();
    EXPECT_NE(pSpin->value(), dfTyped);
    EXPECT_LE(current(), nBefore + 1);
    EXPECT_TRUE(m_pHistory->steps().isLast());
}

TEST_F(History, WhatHasBeenTypedIsUndoneByTheWindow)
{
    activate();
    QDoubleSpinBox* pSpin = m_pFrames->m_pRotationAxisSpin;
    const QString strBefore = pSpin->text();
    const int nBefore = current();
    pSpin->setFocus();
    pSpin->setValue(12.5);
    QTest::keyClick(pSpin, Qt::Key_Return);
    m_pHistory->look();
    ASSERT_EQ(current(), nBefore + 1);
    QTest::keyClick(pSpin, Qt::Key_Z, Qt::ControlModifier);  // of the window
    EXPECT_EQ(current(), nBefore);
    EXPECT_EQ(pSpin->text(), strBefore);
    QTest::keyClick(pSpin, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(current(), nBefore + 1);
    EXPECT_EQ(pSpin->value(), 12.5);
}

TEST_F(History, AfterAPauseTheSameNumberMakesAnotherStep)
{
    QDoubleSpinBox* pSpin = m_pFrames->m_pRotationAxisSpin;
    const int nBefore = current();
    pSpin->setValue(13);
    m_pHistory->look();
    EXPECT_EQ(current(), nBefore + 1);
    pSpin->setValue(13.5);
    m_pHistory->look();
    EXPECT_EQ(current(), nBefore + 1);
    QTest::qWait(1600);
    pSpin->setValue(14);
    m_pHistory->look();
    EXPECT_EQ(current(), nBefore + 2);
}

TEST_F(History, WaitsForRuns)
{
    m_pSearch->m_pThresholdSpin->setValue(3.5);
    m_pHistory->look();
    ASSERT_TRUE(m_pActions->m_pUndo->isEnabled());
    const int nBefore = current();
    bool bGrey = false;
    during([this] { m_pWindow->runPeakHunting(); },
           [&] {
               bGrey = !m_pActions->m_pUndo->isEnabled() && !m_pList->isEnabled();
               m_pHistory->undo();
               m_pHistory->goTo(0);
               return bGrey;
           });
    EXPECT_EQ(m_pSearch->m_pThresholdSpin->value(), 3.5);
    m_pHistory->look();
    EXPECT_EQ(current(), nBefore + 1);  // hunted, mapped and merged: one step
    EXPECT_TRUE(m_pActions->m_pUndo->isEnabled());
}

TEST_F(History, TheListShowsWhereTheWorkStandsAndAClickGoesThere)
{
    m_pSearch->m_pThresholdSpin->setValue(3.5);
    m_pHistory->look();
    m_pWindow->peakReduction3D();
    m_pHistory->look();
    ASSERT_EQ(m_pList->count(), current() + 1);
    EXPECT_TRUE(m_pList->item(current())->font().bold());
    m_pWindow->findChild<QDockWidget*>("Steps")->raise();
    QTest::qWait(50);
    QTest::mouseClick(m_pList->viewport(), Qt::LeftButton, {},
                      m_pList->visualItemRect(m_pList->item(0)).center());
    EXPECT_EQ(current(), 0);
    EXPECT_TRUE(m_pList->item(0)->font().bold());
    EXPECT_FALSE(m_pList->item(1)->font().bold());
    EXPECT_NE(m_pSearch->m_pThresholdSpin->value(), 3.5);
    // Camera, tab and frame are no steps.
    m_pTabs->setCurrentIndex(0);
    m_pSpin->setValue(5);
    m_pRaw->rotateAroundScreenX(20);
    m_pHistory->look();
    EXPECT_EQ(m_pList->count(), 3);
}

TEST_F(History, EndsWithItsSeries)
{
    m_pSearch->m_pThresholdSpin->setValue(3.5);
    m_pHistory->look();
    int nNoted = 0;
    QObject::connect(m_pHistory, &WorkHistory::stepNoted, m_pHistory, [&] { ++nNoted; });
    open();
    m_pHistory->look();
    EXPECT_EQ(nNoted, 1);
    EXPECT_EQ(m_pList->count(), 1);
    EXPECT_FALSE(m_pActions->m_pUndo->isEnabled());
    EXPECT_FALSE(m_pActions->m_pRedo->isEnabled());
}

// The state of a series that is not open, as after a start of the program.
TEST_F(History, AStateBringsItsSeriesWithIt)
{
    m_pWindow->peakReduction3D();
    m_pWindow->runIndexing();
    m_pTabs->setCurrentIndex(0);
    const Picture bytes = picture();
    const WorkState state = m_pWindow->workState();
    newWindow();
    m_pHistory = m_pWindow->findChild<WorkHistory*>();
    ASSERT_TRUE(m_pWindow->showWorkState(state));
    m_pHistory->look();
    EXPECT_EQ(name(), "Opened w");
    EXPECT_EQ(differing(picture(), bytes), "");
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 31);
    EXPECT_GT(m_pScene->imageSize().width(), 1);
    m_pHistory->look();
    EXPECT_EQ(current(), 0);
}

TEST_F(History, SolveIsOneStepAndComesBackWithItsResults)
{
    const Picture bytesOpened = picture();
    m_pHistory->look();
    m_pWindow->solve();
    m_pHistory->look();
    ASSERT_EQ(current(), 1) << qPrintable(name());
    EXPECT_EQ(name(), "Solve");
    const Picture bytesSolved = picture();
    const WorkState solved = m_pWindow->workState();
    ASSERT_NE(differing(bytesSolved, bytesOpened), "");
    m_pActions->m_pUndo->trigger();
    EXPECT_EQ(differing(picture(), bytesOpened), "");
    EXPECT_FALSE(m_pWindow->workState().pIntegration);
    m_pActions->m_pRedo->trigger();
    EXPECT_EQ(differing(picture(), bytesSolved), "");
    EXPECT_EQ(m_pWindow->workState().pIntegration, solved.pIntegration);
    EXPECT_EQ(m_pWindow->workState().pGeometry, solved.pGeometry);
    m_pHistory->look();
    EXPECT_EQ(m_pHistory->steps().count(), 2);
}

}  // namespace tessera
