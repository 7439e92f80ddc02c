// View3DControl: directions, fitting, measuring and slabs of the 3D views.
#pragma once

#include "cloud/cloudslab.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <array>
#include <functional>

class QAction;
class QMenu;
class QPushButton;

namespace tessera {

class ED3DWidget;
class View3DPage;

/// What the control asks of the window; none of it is owned.
struct View3DHost {
    View3DPage* pPage = nullptr;
    QList<ED3DWidget*> listView;
    std::function<ED3DWidget*()> fnCurrent;          ///< the view in the current tab, or null
    std::function<void(const QString&)> fnSay;       ///< to the status bar
    std::function<void(const QString&)> fnComplain;  ///< a red line
};

/// Takes the lower part of the page "3D View Control", keys and menu to the view in the current tab, and fits
/// a view to the points of another series.
///
/// Slab and measuring belong to a view each, as all that the page sets; the page follows the view.
class View3DControl : public QObject {
    Q_OBJECT

public:
    /// Connects page and views of the host, which outlive this.
    explicit View3DControl(const View3DHost& host, QObject* pParent = nullptr);

    /// The menu "3D View" of all that the views can be asked for.
    QMenu* makeMenu(QWidget* pParent);
    /// Another tab is in front: brings page and actions into line with its view.
    void refresh();

protected:
    bool eventFilter(QObject* pObject, QEvent* pEvent) override;

private:
    /// Where a view waits for the first points of a series, and the pan and zoom that it had from the last
    /// fit.
    struct Fit {
        bool bEmpty = true;
        bool bWaits = false;  ///< there are points, and the view has not been shown since
        std::array<float, 3> afCamera = {};
    };

    void createActions();
    void connectSlab();
    void onCurrent(QPushButton* pButton, const std::function<void(ED3DWidget&)>& fn);
    void lookAlongTyped();
    void setMeasuring(bool bMeasure);
    void typeLayer();
    void applySlab();
    void showSlab(const ED3DWidget& view);
    void showLevels(const ED3DWidget& view);
    void stepLayer(int nStep);
    void takePoints(ED3DWidget* pView);
    void fitFirst(ED3DWidget* pView);

    View3DHost m_host;
    QList<QAction*> m_listAction;  ///< with keys in the views
    QAction* m_pMeasure = nullptr;
    QList<QAction*> m_listMenuAction;  ///< in the menu alone
    std::array<int, 3> m_anDirection;  ///< that the page's combo box stands for
    QHash<const QObject*, Fit> m_hashFit;
};

}  // namespace tessera
