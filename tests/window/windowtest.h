// WindowTest: a window with settings of its own, hands for its dialogs and runs, eyes for its log and marks.
#pragma once

#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "tests/batch/batchprogram.h"
#include "tests/printtexts.h"
#include "view3d/ed3dwidget.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/pages/cellpage.h"
#include "window/pages/extractionpage.h"
#include "window/pages/framespage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/refinementpage.h"
#include "window/pages/shiftpage.h"
#include "window/pages/view3dpage.h"
#include "window/windowactions.h"

#include <gtest/gtest.h>

#include <QtTest>
#include <QtWidgets>

#include <memory>

namespace tessera {

class WindowTest : public testing::Test {
protected:
    void SetUp() override;
    void newWindow();
    static QVariant setting(const char* pszKey) { return QSettings("Lumenarc", "Tessera").value(pszKey); }

    /// A file of the test's folder.
    QString path(const QString& strName) const { return m_dir.filePath(strName); }
    QString write(const QString& strName, const QByteArray& bytes) const;
    QStringList linesOf(const QString& strName) const;
    /// A picture of 64 × 64 pixels with grey values.
    void writePicture(const QString& strName, const std::function<int(int x, int y)>& fnGrey) const;
    /// A project of frames, each given as "file stage beam overall".
    QString writeProject(const QString& strName, const QStringList& listFrame,
                         const QByteArray& bytesKeys = "ROTATIONAXIS 0\nCCDPIXELSIZE 0.004\n") const;
    /// A simulated series of quartz: project, frames and all that belongs to them have the name "w".
    static void simulate(const QString& strFolder, const QString& strArguments);

    QString log() const { return m_pLog->toPlainText(); }
    /// How many lines of the log hold the text in that colour.
    int lines(const QString& strText, const QColor& color = Qt::red) const;
    /// The visible items of a kind on the frame, with a colour only those of it.
    template <typename TItem>
    QList<TItem*> marks(const QColor& color = {}) const
    {
        QList<TItem*> list;
        for (QGraphicsItem* pItem : m_pScene->items()) {
            auto* pMark = dynamic_cast<TItem*>(pItem);
            if (!pMark || !pMark->isVisible()) {
                continue;
            }
            QColor colorMark;
            if constexpr (std::is_base_of_v<QGraphicsSimpleTextItem, TItem>) {
                colorMark = pMark->brush().color();
            } else {
                colorMark = pMark->pen().color();
            }
            if (!color.isValid() || colorMark == color) {
                list.append(pMark);
            }
        }
        return list;
    }

    /// Gives the dialogs that `fn` brings up their answers in turn: a path, after '|' a filter; the value or
    /// item of an input; the button of a question; a colour. None cancels. Returns the dialogs' titles, after
    /// ": " the text of a question.
    static QStringList answered(QVariantList listAnswer, const std::function<void()>& fn);
    /// Calls `fnRun`, and from the events that it lets through `fn` until that is true.
    static void during(const std::function<void()>& fnRun, const std::function<bool()>& fn);
    /// What a window manager does with a new window, and when a dialog or menu goes.
    void activate();

    QTemporaryDir m_dir;
    std::unique_ptr<MainWindow> m_pWindow;
    MessageEdit* m_pLog = nullptr;
    WindowActions* m_pActions = nullptr;
    FramesPage* m_pFrames = nullptr;
    ShiftPage* m_pShift = nullptr;
    PeakSearchPage* m_pSearch = nullptr;
    MergingPage* m_pMerging = nullptr;
    CellPage* m_pCell = nullptr;
    RefinementPage* m_pRefine = nullptr;
    ExtractionPage* m_pExtraction = nullptr;
    View3DPage* m_pPanel = nullptr;
    BaseImgView* m_pView = nullptr;
    OriginalImgScene* m_pScene = nullptr;
    QTabWidget* m_pTabs = nullptr;
    ED3DWidget *m_pRaw = nullptr, *m_pMerged = nullptr;
    QTableView* m_pTable = nullptr;
    QSlider* m_pSlider = nullptr;  ///< both name the frame
    QSpinBox* m_pSpin = nullptr;
};

}  // namespace tessera
