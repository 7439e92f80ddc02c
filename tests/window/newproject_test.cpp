// A first-run user: a project made from frames, the guide, and a text for every control.
#include "dataset/projectfile.h"
#include "tests/window/windowtest.h"
#include "window/guidewindow.h"
#include "window/knowncelldialog.h"
#include "window/newprojectdialog.h"
#include "window/pages/lensdistortionbox.h"
#include "window/pages/suggestiondialog.h"

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
            if (pDialog->isVisible())
                pDialog->reject();
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
    for (const QWidget* pUp = p->parentWidget(); pUp; pUp = pUp->parentWidget())
        if (isOne(pUp, {"QAbstractSpinBox", "QComboBox", "QAbstractItemView", "QLineEdit", "QTabBar"}))
            return false;
    if (isOne(p, {"QToolBoxButton", "QDockWidgetTitleButton", "QToolBarExtension", "QScrollBar"}) ||
        p->objectName() == "qt_menubar_ext_button")
        return false;
    const auto* pGroup = qobject_cast<const QGroupBox*>(p);
    return (pGroup && pGroup->isCheckable()) ||
           isOne(p, {"QAbstractButton", "QAbstractSpinBox", "QComboBox", "QLineEdit", "QAbstractItemView",
                     "QAbstractSlider", "QTextEdit", "QPlainTextEdit", "QGraphicsView", "ED3DWidget",
                     "QwtPlot"});
}

}  // namespace

TEST_F(FirstRun, ProjectMadeFromFramesIsTheSimulatorsOwn)
{
    const BatchOutcome outcome = runProgram(
        "tessera-simulate",
        {"--frames",    "12",   "--size", "64",         "--pixel-size", "0.02", "--tilt-start", "-3",
         "--tilt-step", "0.35", "--axis", "-38.5",      "--beam-tilt",  "4",    "--beam-x",     "32",
         "--beam-y",    "32",   "--out",  m_dir.path(), "--name",       "w"});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    const QString strFile = path("w.ed3d");
    ProjectFile truth, made;
    ASSERT_TRUE(truth.read(strFile));
    ASSERT_TRUE(QFile::remove(strFile));

    withDialog([&](NewProjectDialog& dialog, QPushButton* pCreate) {
        const auto says = [&](const char* pch) {
            const QString strText = dialog.m_pProblemLabel->text();
            EXPECT_TRUE(*pch ? strText.startsWith(pch) : strText.isEmpty()) << strText.toStdString();
            EXPECT_EQ(pCreate->isEnabled(), *pch == 0) << pch;
        };
        says("Add the frames");
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(m_dir.path())});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&dialog, &enter);
        QDropEvent drop({5, 5}, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&dialog, &drop);
        EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
        ASSERT_EQ(dialog.m_pFrameList->count(), 12);
        EXPECT_EQ(dialog.m_pFrameLabel->text(), QString("12 frames; the first: 64 × 64 pixels, MRC."));
        EXPECT_EQ(dialog.projectFile(), strFile);

        dialog.m_pFrameList->setCurrentRow(3);
        dialog.m_pDownButton->click();
        EXPECT_EQ(dialog.m_pFrameList->item(4)->text(), "w_0004.mrc");
        dialog.m_pRemoveButton->click();
        EXPECT_EQ(dialog.m_pFrameList->count(), 11);
        dialog.addFrames({m_dir.path(), path("w_0003.mrc"), path("w_truth.json")});
        says("All frames have the same tilt");

        dialog.m_pListRadio->setChecked(true);
        dialog.m_pTiltEdit->setPlainText("1\n2\n3\n");
        says("3 tilts for 12 frames");
        dialog.m_pEndRadio->setChecked(true);
        dialog.m_pTiltStartSpin->setValue(-3);
        dialog.m_pTiltEndSpin->setValue(-3 + 11 * 0.35);
        dialog.m_pBeamTiltSpin->setValue(4);
        says("Give the pixel size");
        EXPECT_NEAR(dialog.m_pWavelengthSpin->value(), 0.025079, 1e-9);  // 200 kV
        dialog.m_pWavelengthRadio->setChecked(true);
        dialog.m_pWavelengthSpin->setValue(0.0251);
        dialog.m_pCameraRadio->setChecked(true);
        dialog.m_pCameraLengthSpin->setValue(100);
        dialog.m_pDetectorPixelSpin->setValue(50.2);
        dialog.m_pRotationAxisSpin->setValue(-38.5);
        dialog.m_pLensDistortion->boxes()[2]->setValue(-1.5);
        says("");
        EXPECT_FALSE(dialog.m_pPrecessionSpin->isEnabled());
        dialog.m_pRotationCombo->setCurrentText("Precession");
        says("Give the angle of the precession");
        dialog.m_pPrecessionSpin->setValue(1.2);
        says("");
        QTest::keyClick(dialog.m_pRotationAxisSpin, Qt::Key_Return);
        EXPECT_TRUE(dialog.isVisible()) << "Return ends a number, not the dialog";
        dialog.m_pFileEdit->setText(path("none/"));
        QTest::keyClicks(dialog.m_pFileEdit, "w");
        says("There is no folder");
        answered({strFile}, [&] { dialog.m_pBrowseButton->click(); });
        pCreate->click();
    });
    ASSERT_TRUE(made.read(strFile)) << made.errorText().toStdString();
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

    // Again: what was given is remembered, and the file is not replaced unasked.
    withDialog([&](NewProjectDialog& dialog, QPushButton* pCreate) {
        EXPECT_EQ(dialog.m_pWavelengthSpin->value(), 0.0251);
        EXPECT_EQ(dialog.m_pCameraLengthSpin->value(), 100);
        EXPECT_EQ(dialog.m_pRotationAxisSpin->value(), -38.5);
        EXPECT_EQ(dialog.m_pRotationCombo->currentText(), QString("Precession"));
        EXPECT_EQ(dialog.m_pPrecessionSpin->value(), 1.2);
        dialog.m_pRotationCombo->setCurrentText("Stepped");
        EXPECT_FALSE(dialog.m_pPrecessionSpin->isEnabled());
        dialog.addFrames({m_dir.path()});
        dialog.m_pTiltStepSpin->setValue(1);
        QStringList listAsked = answered({QMessageBox::No}, [&] { pCreate->click(); });
        EXPECT_TRUE(listAsked.value(0).contains("exists already")) << listAsked.join(' ').toStdString();
        ASSERT_TRUE(QFile::resize(path("w_0007.mrc"), 700));
        listAsked = answered({QMessageBox::No}, [&] { pCreate->click(); });
        EXPECT_TRUE(listAsked.value(0).contains("w_0007.mrc")) << listAsked.join(' ').toStdString();
        dialog.m_pTiltEdit->setPlainText("1\n2\n");
        listAsked = answered({QMessageBox::No}, [&] { QTest::keyClick(&dialog, Qt::Key_Escape); });
        EXPECT_TRUE(listAsked.value(0).contains("lost")) << listAsked.join(' ').toStdString();
        EXPECT_TRUE(dialog.isVisible());
        dialog.m_pButtons->button(QDialogButtonBox::Cancel)->click();
    });
    ASSERT_TRUE(made.read(strFile));
    EXPECT_NEAR(made.overallTilts()[1], -2.65, 1e-9);
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
    for (QTextBlock block = browser.document()->begin(); block.isValid(); block = block.next())
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
         std::initializer_list<QWidget*>{m_pWindow.get(), &dialog, &known, &guide, &suggestion})
        for (const QWidget* p : pWindow->findChildren<QWidget*>())
            if (isControl(p) && ++nControls) {
                EXPECT_TRUE(isText(p->toolTip() + p->whatsThis()))
                    << p->metaObject()->className() << " " << p->property("text").toString().toStdString()
                    << " on " << p->parentWidget()->metaObject()->className();
            }
    for (const QAction* p : m_pWindow->findChildren<QAction*>())
        if (!p->isSeparator() && !p->menu() && !p->text().isEmpty() && ++nActions) {
            EXPECT_TRUE(isText(p->whatsThis())) << p->text().toStdString();
        }
    EXPECT_GT(nControls, 130);
    EXPECT_GT(nActions, 70);
}

}  // namespace tessera
