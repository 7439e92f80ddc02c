// From "Open..." to the list of peaks as a user gets there, and what the driver makes of the same series.
//
// Pointer and keys enter through the window that holds the widgets, so what is out of sight, covered or
// without the focus is not reached.
#include "app/mainwindow.h"
#include "app/messageedit.h"
#include "batch/batchprogram.h"
#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <QToolBox>
#include <QWindow>

#include <memory>

namespace {

const QPoint g_ptDrag(9, -7);  // frame pixels; the beam stays within the region

class Walk : public testing::Test {
protected:
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.filePath("settings"));
        const BatchOutcome outcome = runProgram(
            QStringLiteral("tessera-simulate"),
            {"--crystal", "quartz", "--frames", "12", "--size", "256", "--pixel-size", "0.008", "--tilt-start",
             "-6", "--tilt-step", "1", "--beam-x", "134.4", "--beam-y", "123.3", "--drift", "2", "--out",
             m_dir.path(), "--name", "w"});
        ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
        ASSERT_FALSE(QFile::exists(m_dir.filePath("w.pk")));
        ASSERT_FALSE(QFile::exists(m_dir.filePath("w.sc")));

        m_pWindow = std::make_unique<MainWindow>();
        m_pWindow->resize(1400, 1000);
        m_pWindow->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_pWindow.get()));
        m_pView = m_pWindow->findChild<BaseImgView*>();
        m_pScene = m_pWindow->findChild<OriginalImgScene*>();
        ASSERT_NO_FATAL_FAILURE(walk());
    }
    void walk()
    {
        ASSERT_NO_FATAL_FAILURE(openByKeys(m_dir.filePath("w.ed3d")));
        ASSERT_EQ(m_pScene->imageSize(), QSize(256, 256));

        ASSERT_NO_FATAL_FAILURE(click(page("Shift Evaluation")));
        QWidget* pShift = m_pWindow->findChild<QToolBox*>()->currentWidget();
        ASSERT_NO_FATAL_FAILURE(click(button(pShift, "Select 128×128")));
        const QPointF ptBefore = m_pScene->selectionRect().topLeft();
        ASSERT_NO_FATAL_FAILURE(drag(m_pScene->selectionRect().center() + QPointF(20, 20), g_ptDrag));
        m_ptRegion = (ptBefore + g_ptDrag).toPoint();
        ASSERT_NO_FATAL_FAILURE(click(button(pShift, "Run")));

        ASSERT_NO_FATAL_FAILURE(click(page("Peak Search")));
        ASSERT_NO_FATAL_FAILURE(click(button(m_pWindow->findChild<QToolBox*>()->currentWidget(), "Run")));
    }
    /// Ctrl+O, and the path typed into the dialog that comes.
    void openByKeys(const QString& strFile)
    {
        bool bAnswered = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* pDialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!pDialog || bAnswered)
                return;
            bAnswered = true;
            auto* pEdit = pDialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            QTest::keyClicks(pEdit, strFile);
            EXPECT_EQ(pEdit->text(), strFile);
            QTest::keyClick(pEdit, Qt::Key_Return);
            if (pDialog->isVisible()) {
                ADD_FAILURE() << "Return does not open what was typed";
                pDialog->reject();
            }
        });
        timer.start(20);
        QTest::keyClick(m_pWindow->windowHandle(), Qt::Key_O, Qt::ControlModifier);
        ASSERT_TRUE(bAnswered) << "no file dialog came";
    }
    /// The header of a page of the tool box.
    QAbstractButton* page(const char* pszTitle) { return button(m_pWindow->findChild<QToolBox*>(), pszTitle); }
    static QAbstractButton* button(const QWidget* pParent, const char* pszText)
    {
        for (QAbstractButton* pButton : pParent->findChildren<QAbstractButton*>())
            if (pButton->text() == QString::fromUtf8(pszText) ||
                pButton->toolTip() == QString::fromUtf8(pszText))
                return pButton;
        ADD_FAILURE() << "no button " << pszText;
        return nullptr;
    }
    void click(QWidget* pWidget)
    {
        ASSERT_NE(pWidget, nullptr);
        QTest::qWait(20);  // a page that has just come to sight is laid out
        const QPoint pt = pWidget->mapTo(m_pWindow.get(), pWidget->rect().center());
        ASSERT_EQ(m_pWindow->childAt(pt), pWidget) << "out of sight";
        ASSERT_TRUE(pWidget->isEnabled());
        QTest::mouseClick(m_pWindow->windowHandle(), Qt::LeftButton, {}, pt);
    }
    /// Drags what lies on the frame at `ptFrom` by `ptBy`, both in frame pixels; the view stands at 100 %.
    void drag(const QPointF& ptFrom, const QPoint& ptBy)
    {
        QTest::qWait(20);
        ASSERT_EQ(m_pView->scaleFactor(), 1);
        QWidget* pPort = m_pView->viewport();
        const QPoint pt = pPort->mapTo(m_pWindow.get(), m_pView->mapFromScene(ptFrom));
        ASSERT_EQ(m_pWindow->childAt(pt), pPort) << "out of sight";
        QWindow* pHandle = m_pWindow->windowHandle();
        QTest::mousePress(pHandle, Qt::LeftButton, {}, pt);
        QTest::mouseMove(pHandle, pt + ptBy / 2);
        QTest::mouseMove(pHandle, pt + ptBy);
        QTest::mouseRelease(pHandle, Qt::LeftButton, {}, pt + ptBy);
    }
    QString log() const { return m_pWindow->findChild<MessageEdit*>()->toPlainText(); }

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    BaseImgView* m_pView = nullptr;
    OriginalImgScene* m_pScene = nullptr;
    QPoint m_ptRegion;  ///< upper left corner of the region that was dragged
};

TEST_F(Walk, TheLogTellsBothRunsAndTheDriverGetsTheSameFiles)
{
    const QString aWanted[] = {
        QStringLiteral("Reference region: (%1, %2) 128×128\n").arg(m_ptRegion.x()).arg(m_ptRegion.y()),
        QStringLiteral(">Image shift evaluation started."),
        QStringLiteral(">Image shift evaluation finished in "),
        QStringLiteral(">Peak hunting started."),
        QStringLiteral(" peaks found on frame #   1\n"),
        QStringLiteral(" peaks found on frame #  12\n"),
        QStringLiteral("Peak list saved to %1.").arg(m_dir.filePath("w.pk")),
        QStringLiteral(">Peak hunting finished in "),
    };
    const QString strLog = log();
    int nFrom = 0;
    for (const QString& strWanted : aWanted) {
        const int nAt = strLog.indexOf(strWanted, nFrom);
        ASSERT_GE(nAt, 0) << strWanted.toStdString() << " is missing or out of order in\n" << strLog.toStdString();
        nFrom = nAt + strWanted.size();
    }

    double dfX = 0;
    double dfY = 0;
    QTextStream(readBytes(m_dir.filePath("w.sc"))) >> dfX >> dfY;
    EXPECT_NEAR(dfX, 134.4, 0.5);
    EXPECT_NEAR(dfY, 123.3, 0.5);

    // The region as the log has it, so that a line that hides a fraction is found out.
    const QRegularExpressionMatch match =
        QRegularExpression(QStringLiteral("Reference region: \\((\\d+), (\\d+)\\) 128×128")).match(strLog);
    ASSERT_TRUE(match.hasMatch());
    const QString strOther = m_dir.filePath("driver");
    const BatchOutcome outcome =
        runBatch({"--window-defaults", "--region", match.captured(1) + ',' + match.captured(2) + ",128", "--to",
                  "peaks", "--out", strOther, m_dir.filePath("w.ed3d")});
    ASSERT_EQ(outcome.nStatus, 0) << outcome.strText.toStdString();
    for (const char* pszName : {"w.sc", "w.pk"}) {
        const QByteArray bytesWindow = readBytes(m_dir.filePath(pszName));
        EXPECT_GE(bytesWindow.count('\n'), 12) << pszName;
        EXPECT_TRUE(bytesWindow == readBytes(strOther + '/' + pszName)) << pszName << " differs";
    }
}

}  // namespace
