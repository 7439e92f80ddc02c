// StartPage: what a window without a data set shows: three ways in, and what was opened before.
#pragma once

#include "road/seriescard.h"
#include "window/backgroundjob.h"
#include "window/start/recentseries.h"

#include <QScrollArea>

class QCommandLinkButton;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tessera {

/// Lies over a view, which stays where it is, as large as that.
///
/// It holds controls alone; StartController connects and fills it. All of it can be reached by Tab and
/// pressed by Return.
class StartPage : public QScrollArea {
    Q_OBJECT

public:
    /// Lies over a view, which owns it; no series is listed yet.
    explicit StartPage(QWidget* pView);
    ~StartPage() override;

    /// Lists what was opened before. What the files say of it comes later, from a thread of its own, which
    /// works while the page is in view.
    void setRecent(const QList<RecentSeries>& listRecent);
    /// Shows how far the making of the demo is, or takes that away.
    void showDemo(bool bRunning);
    /// So many frames of the demo are written.
    void setDemoProgress(int nFrames, int nAll);

    QCommandLinkButton* m_pOpenButton;
    QCommandLinkButton* m_pNewButton;
    QCommandLinkButton* m_pDemoButton;
    QTreeWidget* m_pRecentList;  ///< a row for each series, in the order of the list
    QPushButton* m_pOpenRecentButton;
    QPushButton* m_pRemoveButton;
    QProgressBar* m_pDemoProgress;
    QPushButton* m_pStopDemoButton;

signals:
    /// One of the list is to be opened.
    void seriesWanted(const QStringList& listFile);
    /// One is to go from the list.
    void removalWanted(const QStringList& listFile);

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;
    void showEvent(QShowEvent* pEvent) override;
    void hideEvent(QHideEvent* pEvent) override;
    void keyPressEvent(QKeyEvent* pEvent) override;
    void wheelEvent(QWheelEvent* pEvent) override;

private:
    QWidget* makeWaysIn();
    QWidget* makeDemoRow();
    QWidget* makeRecent();
    void readCards();
    void showCard(int nRow, const SeriesCard& card);
    void openSelected();
    void removeSelected();
    void updateButtons();

    QWidget* m_pView;
    QWidget* m_pDemoRow;
    QWidget* m_pRecentGroup;
    QList<RecentSeries> m_listRecent;
    QList<bool> m_listMissing;  ///< by rows
    BackgroundJob m_job;
};

}  // namespace tessera
