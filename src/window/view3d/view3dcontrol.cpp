#include "window/view3d/view3dcontrol.h"

#include "view3d/ed3dwidget.h"
#include "window/pages/controltips.h"
#include "window/pages/view3dpage.h"

#include <QAction>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>

#include <cmath>

namespace tessera {

namespace {

std::array<float, 3> panAndZoom(const ED3DWidget& view)
{
    float afRotation[16];
    std::array<float, 3> af = {};
    view.getCamera(afRotation, af[0], af[1], af[2]);
    return af;
}

}  // namespace

View3DControl::View3DControl(const View3DHost& host, QObject* pParent)
    : QObject(pParent), m_host(host), m_anDirection(CloudSlab().anDirection)
{
    const View3DPage& page = *m_host.pPage;
    onCurrent(page.m_pButtonNearest, [this](ED3DWidget& view) {
        if (!view.zoneInView()) {
            m_host.fnSay(tr("There is no cell yet, so zones cannot be named."));
        }
        view.turnToNearestZone();
    });
    onCurrent(page.m_pButtonFit, [](ED3DWidget& view) { view.fitView(); });
    onCurrent(page.m_pButtonReset, [](ED3DWidget& view) { view.resetView(); });
    onCurrent(page.m_pButtonAlongAxis, [](ED3DWidget& view) { view.viewAlong({1, 0, 0}); });
    connect(page.m_pButtonAlongZone, &QPushButton::clicked, this, &View3DControl::lookAlongTyped);
    connect(page.m_pEditZone, &QLineEdit::returnPressed, this, &View3DControl::lookAlongTyped);
    connect(page.m_pButtonMeasure, &QPushButton::toggled, this, &View3DControl::setMeasuring);
    connectSlab();
    createActions();
    for (ED3DWidget* pView : qAsConst(m_host.listView)) {
        connect(pView, &ED3DWidget::pointDisplayDataChanged, this, &View3DControl::takePoints);
        connect(pView, &ED3DWidget::latticeChanged, this, [this](const ED3DWidget* pChanged) {
            if (pChanged == m_host.fnCurrent()) {
                showLevels(*pChanged);
            }
        });
        pView->installEventFilter(this);
        pView->addActions(m_listAction);
    }
    refresh();
}

void View3DControl::onCurrent(QPushButton* pButton, const std::function<void(ED3DWidget&)>& fn)
{
    connect(pButton, &QPushButton::clicked, this, [this, fn] {
        if (ED3DWidget* pView = m_host.fnCurrent()) {
            fn(*pView);
        }
    });
}

/// Each action does the same as a button or box of the page. The keys work in a view that has the keyboard
/// focus.
void View3DControl::createActions()
{
    const View3DPage& page = *m_host.pPage;
    const auto add = [this](const QString& strText, Qt::Key key, const QString& strTip) {
        auto* pAction = new QAction(strText, this);
        pAction->setShortcut(QKeySequence(key));
        pAction->setShortcutContext(Qt::WidgetShortcut);
        explain(pAction, strTip);
        m_listAction.append(pAction);
        return pAction;
    };
    connect(add(tr("&Fit to Points"), Qt::Key_F, tr("Zooms so that the points shown fill the view.")),
            &QAction::triggered, page.m_pButtonFit, &QPushButton::click);
    connect(add(tr("&Nearest Zone"), Qt::Key_N, tr("Turns to the zone that the view names in its corner.")),
            &QAction::triggered, page.m_pButtonNearest, &QPushButton::click);
    m_pMeasure = add(tr("&Measure Distances"), Qt::Key_M,
                     tr("While it is on, a left drag from one point to another shows their distance."));
    m_pMeasure->setCheckable(true);
    connect(m_pMeasure, &QAction::toggled, page.m_pButtonMeasure, &QPushButton::setChecked);
    QAction* pSlab = add(tr("&Slab"), Qt::Key_S, tr("Shows only the points near one layer of the lattice."));
    pSlab->setCheckable(true);
    connect(pSlab, &QAction::toggled, page.m_pGroupSlab, &QGroupBox::setChecked);
    connect(page.m_pGroupSlab, &QGroupBox::toggled, pSlab, &QAction::setChecked);
    connect(add(tr("Ne&xt Layer"), Qt::Key_PageUp, tr("Moves the slab to the next layer.")),
            &QAction::triggered, this, [this] { stepLayer(1); });
    connect(add(tr("&Previous Layer"), Qt::Key_PageDown, tr("Moves the slab to the layer before.")),
            &QAction::triggered, this, [this] { stepLayer(-1); });
}

QMenu* View3DControl::makeMenu(QWidget* pParent)
{
    auto* pMenu = new QMenu(tr("3&D View"), pParent);
    const View3DPage& page = *m_host.pPage;
    for (QPushButton* pButton : {page.m_pButtonAlongRA, page.m_pButtonAlongRB, page.m_pButtonAlongRC,
                                 page.m_pButtonAlongA, page.m_pButtonAlongB, page.m_pButtonAlongC}) {
        auto* pAction = new QAction(tr("Along %1").arg(pButton->text()), this);
        explain(pAction, tr("Looks along %1 of the cell in force.").arg(pButton->text()));
        connect(pAction, &QAction::triggered, pButton, &QPushButton::click);
        m_listMenuAction.append(pAction);
    }
    const auto add = [this](const QString& strText, QPushButton* pButton, const QString& strTip) {
        auto* pAction = new QAction(strText, this);
        explain(pAction, strTip);
        connect(pAction, &QAction::triggered, pButton, &QPushButton::click);
        m_listMenuAction.append(pAction);
    };
    add(tr("Along the &Rotation Axis"), page.m_pButtonAlongAxis, tr("Looks along the rotation axis."));
    add(tr("R&eset"), page.m_pButtonReset, tr("Resets rotation, shift and zoom."));
    pMenu->addActions(m_listMenuAction);
    pMenu->addSeparator();
    pMenu->addActions(m_listAction);
    refresh();
    return pMenu;
}

void View3DControl::refresh()
{
    ED3DWidget* pView = m_host.fnCurrent();
    for (QAction* pAction : m_listAction + m_listMenuAction) {
        pAction->setEnabled(pView != nullptr);
    }
    if (pView) {
        const QSignalBlocker block(m_host.pPage->m_pButtonMeasure);
        m_host.pPage->m_pButtonMeasure->setChecked(pView->isMeasuring());
        m_pMeasure->setChecked(pView->isMeasuring());
        showSlab(*pView);
    }
}

// ---- Directions and distances

void View3DControl::lookAlongTyped()
{
    ED3DWidget* pView = m_host.fnCurrent();
    const QString strText = m_host.pPage->m_pEditZone->text();
    QString strReason;
    const auto anZone = readDirection(strText, &strReason);
    if (!anZone) {
        m_host.fnComplain(tr("\"%1\" cannot be looked along: %2.").arg(strText, strReason));
        return;
    }
    if (!pView) {
        return;
    }
    if (const auto direction = pView->zoneDirection(*anZone)) {
        pView->viewAlong(*direction);
    } else {
        m_host.fnComplain(tr("There is no cell yet to look along %1.").arg(directionName(*anZone)));
    }
}

void View3DControl::setMeasuring(bool bMeasure)
{
    m_pMeasure->setChecked(bMeasure);
    if (ED3DWidget* pView = m_host.fnCurrent()) {
        pView->setMeasuring(bMeasure);
        if (bMeasure) {
            m_host.fnSay(tr("Drag with the left button from one point to another."));
        } else {
            pView->measure(-1, -1);
        }
    }
}

// ---- Slabs

void View3DControl::connectSlab()
{
    const View3DPage& page = *m_host.pPage;
    connect(page.m_pGroupSlab, &QGroupBox::toggled, this, &View3DControl::applySlab);
    connect(page.m_pComboLayer, QOverload<int>::of(&QComboBox::activated), this, &View3DControl::typeLayer);
    connect(page.m_pComboLayer->lineEdit(), &QLineEdit::editingFinished, this, &View3DControl::typeLayer);
    connect(page.m_pSpinThickness, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &View3DControl::applySlab);
    connect(page.m_pSpinLayer, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double df) {
        const QSignalBlocker block(m_host.pPage->m_pSliderLayer);
        m_host.pPage->m_pSliderLayer->setValue(int(std::lround(df)));
        applySlab();
    });
    connect(page.m_pSliderLayer, &QSlider::valueChanged, page.m_pSpinLayer, &QDoubleSpinBox::setValue);
}

/// Takes the direction of the combo box; if it cannot be understood, the box shows the one in force again.
void View3DControl::typeLayer()
{
    QComboBox* pCombo = m_host.pPage->m_pComboLayer;
    QString strReason;
    const auto anDirection = readLayer(pCombo->currentText(), &strReason);
    if (anDirection == m_anDirection) {
        return;
    }
    if (!anDirection) {
        const QString strText = pCombo->currentText();
        pCombo->setEditText(layerText(m_anDirection));
        m_host.fnComplain(
            tr("\"%1\" names no layers: it is neither h, k nor l, and %2.").arg(strText, strReason));
        return;
    }
    m_anDirection = *anDirection;
    applySlab();
}

void View3DControl::applySlab()
{
    ED3DWidget* pView = m_host.fnCurrent();
    if (!pView) {
        return;
    }
    const View3DPage& page = *m_host.pPage;
    const bool bSame = pView->slab() && pView->slab()->anDirection == m_anDirection;
    if (page.m_pGroupSlab->isChecked()) {
        pView->setSlab(CloudSlab{m_anDirection, page.m_pSpinLayer->value(), page.m_pSpinThickness->value()});
    } else {
        pView->setSlab(std::nullopt);
    }
    if (!bSame) {
        showLevels(*pView);
    }
}

/// Shows the state of the view on the page; without a slab the numbers are kept for the next one.
void View3DControl::showSlab(const ED3DWidget& view)
{
    const View3DPage& page = *m_host.pPage;
    const auto& slab = view.slab();
    if (slab) {
        m_anDirection = slab->anDirection;
        page.m_pComboLayer->setEditText(layerText(m_anDirection));
        const QSignalBlocker blockSpin(page.m_pSpinLayer), blockThickness(page.m_pSpinThickness);
        page.m_pSpinLayer->setValue(slab->dfLevel);
        page.m_pSpinThickness->setValue(slab->dfHalfThickness);
    }
    page.m_pGroupSlab->setChecked(slab.has_value());  // which the view is told, and has already
    showLevels(view);
}

/// The slider goes over the layers of the points; it is at that of the box, if it is among them.
void View3DControl::showLevels(const ED3DWidget& view)
{
    if (!view.slab()) {
        return;
    }
    QSlider* pSlider = m_host.pPage->m_pSliderLayer;
    const auto [nLeast, nGreatest] = view.slabLevels(view.slab()->anDirection);
    const QSignalBlocker block(pSlider);
    pSlider->setRange(nLeast, nGreatest);
    pSlider->setValue(int(std::lround(m_host.pPage->m_pSpinLayer->value())));
}

void View3DControl::stepLayer(int nStep)
{
    if (m_host.pPage->m_pGroupSlab->isChecked()) {
        m_host.pPage->m_pSpinLayer->stepBy(nStep);
    } else {
        m_host.fnSay(tr("There is no slab to move: S switches one on."));
    }
}

// ---- The first points of a series

void View3DControl::takePoints(ED3DWidget* pView)
{
    Fit& fit = m_hashFit[pView];
    const bool bEmpty = pView->points().isEmpty();
    if (fit.bEmpty && !bEmpty) {
        fit.bWaits = true;
        if (pView->isVisible()) {
            fitFirst(pView);
        }
    }
    fit.bEmpty = bEmpty;
    if (!bEmpty && pView == m_host.fnCurrent()) {
        showLevels(*pView);
    }
}

/// Fits a view that nobody has zoomed or moved. Not before it is shown, as it has no size until then.
void View3DControl::fitFirst(ED3DWidget* pView)
{
    Fit& fit = m_hashFit[pView];
    if (!fit.bWaits) {
        return;
    }
    fit.bWaits = false;
    const std::array<float, 3> afNow = panAndZoom(*pView);
    if (afNow == std::array<float, 3>{} || afNow == fit.afCamera) {
        pView->fitView();
        fit.afCamera = panAndZoom(*pView);
    }
}

bool View3DControl::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::Show) {
        if (auto* pView = qobject_cast<ED3DWidget*>(pObject)) {
            fitFirst(pView);
        }
    }
    return QObject::eventFilter(pObject, pEvent);
}

}  // namespace tessera
