// A first-run user: a project made from frames, the guide, and a text for every control.
#include "dataset/projectfile.h"
#include "tests/smvbytes.h"
#include "tests/window/windowtest.h"
#include "window/factlabel.h"
#include "window/framepreview.h"
#include "window/guidewindow.h"
#include "window/knowncelldialog.h"
#include "window/newproject/directionsbox.h"
#include "window/newproject/electronsbox.h"
#include "window/newproject/framelistbox.h"
#include "window/newproject/headerreading.h"
#include "window/newproject/pixelsizebox.h"
#include "window/newproject/previewbox.h"
#include "window/newproject/projectfilerow.h"
#include "window/newproject/tiltsbox.h"
#include "window/newprojectdialog.h"
#include "window/pages/lensdistortionbox.h"
#include "window/pages/suggestiondialog.h"

#include <QtEndian>

#include <cmath>

namespace tessera {

namespace {

class FirstRun : public WindowTest {
protected:
    /// Opens the dialog and works in it; `fnWork` leaves it closed.
    void withDialog(const std::function<void(NewProjectDialog&, QPushButton* pCreate)>& fnWork)
    {
        bool bCame = false;
        QTimer::singleShot(0, [&] {
            auto* pDialog = qobject_cast<NewProjectDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(pDialog, nullptr);
            bCame = true;
            fnWork(*pDialog, pDialog->m_pButtons->button(QDialogButtonBox::Ok));
            EXPECT_FALSE(pDialog->isVisible());
            if (pDialog->isVisible()) {
                pDialog->reject();
            }
        });
        m_pActions->m_pNewProject->trigger();
        EXPECT_TRUE(bCame);
    }
};

/// What the user works with, without the parts that Qt makes of it.
bool isControl(const QWidget* p)
{
    const auto isOne = [](const QWidget* pWidget, std::initializer_list<const char*> listClass) {
        return std::any_of(listClass.begin(), listClass.end(),
                           [pWidget](const char* psz) { return pWidget->inherits(psz); });
    };
    for (const QWidget* pUp = p->parentWidget(); pUp; pUp = pUp->parentWidget()) {
        if (isOne(pUp, {"QAbstractSpinBox", "QComboBox", "QAbstractItemView", "QLineEdit", "QTabBar"})) {
            return false;
        }
    }
    if (isOne(p, {"QToolBoxButton", "QDockWidgetTitleButton", "QToolBarExtension", "QScrollBar"}) ||
        p->objectName() == "qt_menubar_ext_button") {
        return false;
    }
    const auto* pGroup = qobject_cast<const QGroupBox*>(p);
    return (pGroup && pGroup->isCheckable()) ||
           isOne(p, {"QAbstractButton", "QAbstractSpinBox", "QComboBox", "QLineEdit", "QAbstractItemView",
                     "QAbstractSlider", "QTextEdit", "QPlainTextEdit", "QGraphicsView", "ED3DWidget",
                     "QwtPlot"});
}

bool contains(const std::string& str, const char* pszPart)
{
    return str.find(pszPart) != std::string::npos;
}

}  // namespace

/// The frames of a simulated series whose project has been taken away.
class NewProjectOfFrames : public FirstRun {
protected:
    void SetUp() override
    {
        FirstRun::SetUp();
        const BatchOutcome outcome = runProgram(
            "tessera-simulate",
            {"--frames",    "12",   "--size", "64",         "--pixel-size", "0.02", "--tilt-start", "-3",
             "--tilt-step", "0.35", "--axis", "-38.5",      "--beam-tilt",  "4",    "--beam-x",     "32",
             "--beam-y",    "32",   "--out",  m_dir.path(), "--name",       "w"});
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        ASSERT_TRUE(truth.read(strFile));
        ASSERT_TRUE(QFile::remove(strFile));
    }
    /// Expects that the dialog tells a problem that begins so, or none, and can create the project then.
    static void expectProblem(const NewProjectDialog& dialog, const char* pszBegin)
    {
        const QString strText = dialog.m_pProblemLabel->text();
        EXPECT_EQ(strText.left(int(strlen(pszBegin))), pszBegin);
        EXPECT_EQ(strText.isEmpty(), *pszBegin == 0) << strText.toStdString();
        EXPECT_EQ(dialog.m_pButtons->button(QDialogButtonBox::Ok)->isEnabled(), *pszBegin == 0) << pszBegin;
    }
    static void cancel(const NewProjectDialog& dialog)
    {
        dialog.m_pButtons->button(QDialogButtonBox::Cancel)->click();
    }
    static void giveTilts(const NewProjectDialog& dialog)
    {
        dialog.m_pTilts->m_pEndRadio->setChecked(true);
        dialog.m_pTilts->m_pTiltStartSpin->setValue(-3);
        dialog.m_pTilts->m_pTiltEndSpin->setValue(-3 + 11 * 0.35);
        dialog.m_pTilts->m_pBeamTiltSpin->setValue(4);
    }
    static void giveOptics(const NewProjectDialog& dialog)
    {
        dialog.m_pElectrons->m_pWavelengthRadio->setChecked(true);
        dialog.m_pElectrons->m_pWavelengthSpin->setValue(0.0251);
        dialog.m_pPixels->m_pCameraRadio->setChecked(true);
        dialog.m_pPixels->m_pCameraLengthSpin->setValue(100);
        dialog.m_pPixels->m_pDetectorPixelSpin->setValue(50.2);
        dialog.m_pDirections->m_pRotationAxisSpin->setValue(-38.5);
    }
    /// The project of the frames, with a lens and a precession.
    void create()
    {
        withDialog([&](NewProjectDialog& dialog, QPushButton* pCreate) {
            dialog.addFrames({m_dir.path()});
            giveTilts(dialog);
            giveOptics(dialog);
            dialog.m_pLensDistortion->boxes()[2]->setValue(-1.5);
            dialog.m_pDirections->m_pRotationCombo->setCurrentText("Precession");
            dialog.m_pDirections->m_pPrecessionSpin->setValue(1.2);
            answered({strFile}, [&] { dialog.m_pFile->m_pBrowseButton->click(); });
            pCreate->click();
        });
        ASSERT_TRUE(made.read(strFile)) << made.errorText().toStdString();
    }

    const QString strFile = path("w.ed3d");
    ProjectFile truth, made;
};

TEST_F(NewProjectOfFrames, TakesAFolderThatIsDroppedAndMovesItsFrames)
{
    withDialog([&](NewProjectDialog& dialog, QPushButton*) {
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(m_dir.path())});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&dialog, &enter);
        QDropEvent drop({5, 5}, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&dialog, &drop);
        EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
        ASSERT_EQ(dialog.m_pFrames->m_pFrameList->count(), 12);
        EXPECT_EQ(dialog.m_pFrames->m_pFrameLabel->text(),
                  QString("12 frames; the first: 64 × 64 pixels, MRC."));
        EXPECT_EQ(dialog.projectFile(), strFile);

        dialog.m_pFrames->m_pFrameList->setCurrentRow(3);
        dialog.m_pFrames->m_pDownButton->click();
        EXPECT_EQ(dialog.m_pFrames->m_pFrameList->item(4)->text(), "w_0004.mrc");
        dialog.m_pFrames->m_pRemoveButton->click();
        EXPECT_EQ(dialog.m_pFrames->m_pFrameList->count(), 11);
        dialog.addFrames({m_dir.path(), path("w_0003.mrc"), path("w_truth.json")});
        EXPECT_EQ(dialog.m_pFrames->m_pFrameList->count(), 12);
        cancel(dialog);
    });
}

TEST_F(NewProjectOfFrames, TellsWhatIsMissingOneAfterTheOther)
{
    withDialog([&](NewProjectDialog& dialog, QPushButton*) {
        expectProblem(dialog, "Add the frames");
        dialog.addFrames({m_dir.path()});
        expectProblem(dialog, "All frames have the same tilt");
        dialog.m_pTilts->m_pListRadio->setChecked(true);
        dialog.m_pTilts->m_pTiltEdit->setPlainText("1\n2\n3\n");
        expectProblem(dialog, "3 tilts for 12 frames");
        giveTilts(dialog);
        expectProblem(dialog, "Give the pixel size");
        EXPECT_NEAR(dialog.m_pElectrons->m_pWavelengthSpin->value(), 0.025079, 1e-9);  // 200 kV
        giveOptics(dialog);
        expectProblem(dialog, "");
        EXPECT_FALSE(dialog.m_pDirections->m_pPrecessionSpin->isEnabled());
        dialog.m_pDirections->m_pRotationCombo->setCurrentText("Precession");
        expectProblem(dialog, "Give the angle of the precession");
        dialog.m_pDirections->m_pPrecessionSpin->setValue(1.2);
        expectProblem(dialog, "");
        QTest::keyClick(dialog.m_pDirections->m_pRotationAxisSpin, Qt::Key_Return);
        EXPECT_TRUE(dialog.isVisible()) << "Return ends a number, not the dialog";
        dialog.m_pFile->m_pFileEdit->setText(path("none/"));
        QTest::keyClicks(dialog.m_pFile->m_pFileEdit, "w");
        expectProblem(dialog, "There is no folder");
        cancel(dialog);
    });
}

TEST_F(NewProjectOfFrames, TheProjectIsTheSimulatorsOwn)
{
    ASSERT_NO_FATAL_FAILURE(create());
    EXPECT_EQ(made.frameFiles(), truth.frameFiles());
    EXPECT_EQ(made.wavelength(), truth.wavelength());
    EXPECT_EQ(made.distortion().dfThirdOrderRadial, -1.5);
    EXPECT_EQ(rotationModeText(made.rotation()), QString("precession,1.2"));
    EXPECT_EQ(made.distortion().dfRadius, 256);
    EXPECT_EQ(made.rotationAxis(), truth.rotationAxis());
    EXPECT_NEAR(made.pixelSize(), truth.pixelSize(), 1e-12);
    for (int i = 0; i < 12; ++i) {
        EXPECT_NEAR(made.stageTilts()[i], truth.stageTilts()[i], 1e-9) << i;
        EXPECT_NEAR(made.beamTilts()[i], truth.beamTilts()[i], 1e-9) << i;
        EXPECT_NEAR(made.overallTilts()[i], truth.overallTilts()[i], 1e-9) << i;
    }
    EXPECT_EQ(m_pFrames->m_pFileTable->rowCount(), 12) << "the project is open";
}

TEST_F(NewProjectOfFrames, WhatWasGivenIsRememberedAndNothingIsReplacedOrLostUnasked)
{
    ASSERT_NO_FATAL_FAILURE(create());
    withDialog([&](NewProjectDialog& dialog, QPushButton* pCreate) {
        EXPECT_EQ(dialog.m_pElectrons->m_pWavelengthSpin->value(), 0.0251);
        EXPECT_EQ(dialog.m_pPixels->m_pCameraLengthSpin->value(), 100);
        EXPECT_EQ(dialog.m_pDirections->m_pRotationAxisSpin->value(), -38.5);
        EXPECT_EQ(dialog.m_pDirections->m_pRotationCombo->currentText(), QString("Precession"));
        EXPECT_EQ(dialog.m_pDirections->m_pPrecessionSpin->value(), 1.2);
        dialog.m_pDirections->m_pRotationCombo->setCurrentText("Stepped");
        EXPECT_FALSE(dialog.m_pDirections->m_pPrecessionSpin->isEnabled());
        dialog.addFrames({m_dir.path()});
        dialog.m_pTilts->m_pTiltStepSpin->setValue(1);
        const auto refused = [&](const std::function<void()>& fn) {
            return answered({QMessageBox::No}, fn).join(' ').toStdString();
        };
        EXPECT_PRED2(contains, refused([&] { pCreate->click(); }), "exists already");
        ASSERT_TRUE(QFile::resize(path("w_0007.mrc"), 700));
        EXPECT_PRED2(contains, refused([&] { pCreate->click(); }), "w_0007.mrc");
        dialog.m_pTilts->m_pTiltEdit->setPlainText("1\n2\n");
        EXPECT_PRED2(contains, refused([&] { QTest::keyClick(&dialog, Qt::Key_Escape); }), "lost");
        EXPECT_TRUE(dialog.isVisible());
        cancel(dialog);
    });
    ASSERT_TRUE(made.read(strFile));
    EXPECT_NEAR(made.overallTilts()[1], -2.65, 1e-9);
}

/// Frames that tell their geometry, and a log beside them, in a dialog.
class FactsOfFrames : public FirstRun {
protected:
    void SetUp() override
    {
        FirstRun::SetUp();
        // A beam at (20, 30) on frames of 64 × 48 pixels.
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 64; ++x) {
                const double dfSquare = (x - 20) * (x - 20) + (y - 30) * (y - 30);
                const auto nCounts = quint16(10 + (x * 7 + y * 3) % 5 + 2000 * std::exp(-dfSquare / 8));
                qToLittleEndian(nCounts, bytesPixel.data() + 2 * (64 * y + x));
            }
        }
        for (int i = 0; i < 12; ++i) {
            writeFrame(i);
        }
        write("scan_log.txt", "Rotation axis: -30 deg\nCamera length: 500 mm\n");
        pDialog = std::make_unique<NewProjectDialog>(m_dir.path());
        pDialog->m_pDirections->m_pStretchAmplitudeSpin->setValue(1);  // the user's own group
        ASSERT_NO_FATAL_FAILURE(addFrames());
    }
    void TearDown() override { pDialog.reset(); }
    void writeFrame(int i) const
    {
        write(QString("c_%1.img").arg(i + 1),
              smvBytes(smvLines(-10 - 0.5 * i, -0.5, 0.05, 400), 64, 48, bytesPixel));
    }
    /// Adds the folder and waits until it has been read.
    void addFrames() const
    {
        pDialog->addFrames({m_dir.path()});
        ASSERT_TRUE(QTest::qWaitFor(
            [this] { return pDialog->m_pFrames->m_pHeaders->m_pStopFactsButton->isHidden(); }, 20000));
    }
    QString fact(QDoubleSpinBox* pSpin) const { return pDialog->m_facts.label(pSpin)->fact(); }

    QByteArray bytesPixel = QByteArray(2 * 64 * 48, '\0');
    std::unique_ptr<NewProjectDialog> pDialog;
};

TEST_F(FactsOfFrames, FillTheFields)
{
    NewProjectDialog& dialog = *pDialog;
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return !dialog.m_pPreviewBox->m_pPreview->look().image.isNull(); }, 20000));
    EXPECT_EQ(dialog.m_pTilts->m_pTiltStartSpin->value(), -10.25);
    EXPECT_EQ(dialog.m_pTilts->m_pTiltStepSpin->value(), -0.5);
    EXPECT_EQ(fact(dialog.m_pTilts->m_pTiltStartSpin), QString("OSC_START + OSC_RANGE / 2"));
    EXPECT_EQ(dialog.m_pPixels->m_pCameraLengthSpin->value(), 400) << "the header counts before the log";
    EXPECT_EQ(dialog.m_pPixels->m_pDetectorPixelSpin->value(), 50);
    EXPECT_NEAR(dialog.project().dfWavelength, 0.02508, 1e-5);
    EXPECT_NEAR(dialog.project().dfPixelSize, 0.05 / (0.02508 * 400), 1e-6);
    EXPECT_EQ(dialog.m_pProblemLabel->text(), QString());
    EXPECT_FALSE(dialog.project().bAxisKnown) << "the sense of a told axis is not certain";
    EXPECT_TRUE(fact(dialog.m_pDirections->m_pRotationAxisSpin).contains("sense not certain"))
        << fact(dialog.m_pDirections->m_pRotationAxisSpin).toStdString();
    ASSERT_TRUE(dialog.m_pPreviewBox->m_pPreview->look().ptBeam);
    EXPECT_NEAR(dialog.m_pPreviewBox->m_pPreview->look().ptBeam->x(), 20, 0.5);
    EXPECT_NEAR(dialog.m_pPreviewBox->m_pPreview->look().ptBeam->y(), 30, 0.5);
}

TEST_F(FactsOfFrames, LeaveWhatTheUserGivesAndStandBesideIt)
{
    NewProjectDialog& dialog = *pDialog;
    dialog.m_pDirections->m_pRotationAxisSpin->setValue(45);
    EXPECT_TRUE(dialog.project().bAxisKnown);
    EXPECT_EQ(dialog.m_pPreviewBox->m_pPreview->axis(), 45);
    dialog.m_pPixels->m_pCameraLengthSpin->setValue(444);
    writeFrame(12);
    ASSERT_NO_FATAL_FAILURE(addFrames());
    EXPECT_EQ(dialog.project().listFrame.size(), 13);
    EXPECT_EQ(dialog.m_pPixels->m_pCameraLengthSpin->value(), 444);
    EXPECT_TRUE(fact(dialog.m_pPixels->m_pCameraLengthSpin).contains("DISTANCE: 400"))
        << fact(dialog.m_pPixels->m_pCameraLengthSpin).toStdString();
    EXPECT_EQ(dialog.m_pDirections->m_pRotationAxisSpin->value(), 45);
}

TEST_F(FirstRun, GuideOpensAtThePageInFront)
{
    ASSERT_FALSE(GuideWindow::guideFile().isEmpty());
    GuideWindow guide(GuideWindow::guideFile());
    GuideBrowser& browser = *guide.m_pBrowser;
    auto* pToolBox = m_pWindow->findChild<QToolBox*>();
    for (int i = 0; i < pToolBox->count(); ++i) {
        guide.showAt(pToolBox->itemText(i));
        QTest::qWait(i == 0 ? 400 : 0);  // a window gets its size when it is shown
        EXPECT_EQ(browser.cursorForPosition({20, 8}).block().text(), pToolBox->itemText(i));
    }
    int nLinks = 0, nPictures = 0;
    for (QTextBlock block = browser.document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            const QUrl url(format.anchorHref()), urlPicture(format.toImageFormat().name());
            if (format.isAnchor() && url.path().isEmpty() && ++nLinks) {
                EXPECT_TRUE(browser.showHeading(url.fragment())) << url.toString().toStdString();
            }
            if (format.isImageFormat() && ++nPictures) {
                EXPECT_EQ(browser.loadResource(QTextDocument::ImageResource, urlPicture).type(),
                          QVariant::Image)
                    << urlPicture.toString().toStdString();
            }
        }
    }
    EXPECT_GE(nLinks, 12);
    EXPECT_GE(nPictures, 15);
    guide.m_pSearchEdit->setText("natrolite");
    guide.find();
    EXPECT_EQ(browser.textCursor().selectedText(), "natrolite");
}

TEST_F(FirstRun, EveryControlIsExplained)
{
    const auto isText = [](const QString& str) {
        return QTextDocumentFragment::fromHtml(str).toPlainText().size() > 5;
    };
    NewProjectDialog dialog(m_dir.path());
    KnownCellDialog known({}, m_dir.path());
    GuideWindow guide(GuideWindow::guideFile());
    SuggestionDialog suggestion("Numbers", {{"one", "1", "2", "of this"}});
    int nControls = 0, nActions = 0;
    for (const QWidget* pWindow :
         std::initializer_list<QWidget*>{m_pWindow.get(), &dialog, &known, &guide, &suggestion}) {
        for (const QWidget* p : pWindow->findChildren<QWidget*>()) {
            if (isControl(p) && ++nControls) {
                EXPECT_TRUE(isText(p->toolTip() + p->whatsThis()))
                    << p->metaObject()->className() << " " << p->property("text").toString().toStdString()
                    << " on " << p->parentWidget()->metaObject()->className();
            }
        }
    }
    for (const QAction* p : m_pWindow->findChildren<QAction*>()) {
        if (!p->isSeparator() && !p->menu() && !p->text().isEmpty() && ++nActions) {
            EXPECT_TRUE(isText(p->whatsThis())) << p->text().toStdString();
        }
    }
    EXPECT_GT(nControls, 130);
    EXPECT_GT(nActions, 70);
}

}  // namespace tessera
