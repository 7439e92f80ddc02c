#include "tools/walk/walker.h"

#include "frameview/baseimgview.h"
#include "window/mainwindow.h"
#include "window/newproject/framelistbox.h"
#include "window/newproject/headerreading.h"
#include "window/newprojectdialog.h"
#include "window/road/roaddock.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QToolButton>

namespace tessera {

namespace {

constexpr int g_nPause = 30;  ///< ms between checks whether the next step is possible
constexpr double g_dfSecondsToLook = 0.5;
constexpr double g_dfLongestWait = 3600;  ///< s for one step; the road of a large series may take long

template <typename T>
T* modal()
{
    return qobject_cast<T*>(QApplication::activeModalWidget());
}

QMenu* openMenu()
{
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

/// The visible button with a text.
QAbstractButton* buttonOf(const QWidget* pParent, const QString& strText)
{
    for (QAbstractButton* pButton : pParent->findChildren<QAbstractButton*>()) {
        if (pButton->isVisible() && pButton->text().remove(QLatin1Char('&')) == strText) {
            return pButton;
        }
    }
    return nullptr;
}

QAbstractButton* buttonOfTool(const QWidget& window, const QString& strText)
{
    for (QToolButton* pButton : window.findChildren<QToolButton*>()) {
        const QAction* pAction = pButton->defaultAction();
        if (pButton->isVisible() && pAction && QString(pAction->text()).remove(QLatin1Char('&')) == strText) {
            return pButton;
        }
    }
    return nullptr;
}

/// The label or radio button in front of a field.
QWidget* captionOf(const QWidget* pParent, const QString& strText)
{
    if (QAbstractButton* pButton = buttonOf(pParent, strText)) {
        return pButton;
    }
    for (QLabel* pLabel : pParent->findChildren<QLabel*>()) {
        if (pLabel->isVisible() && pLabel->text() == strText) {
            return pLabel;
        }
    }
    return nullptr;
}

/// The box to the right of a caption, in the same row.
QAbstractSpinBox* fieldBeside(const QWidget* pCaption)
{
    QAbstractSpinBox* pNearest = nullptr;
    const QWidget* pParent = pCaption->parentWidget();
    const int nRow = pCaption->geometry().center().y();
    for (QAbstractSpinBox* pBox : pParent->findChildren<QAbstractSpinBox*>()) {
        const QRect rc(pBox->mapTo(pParent, QPoint()), pBox->size());
        const bool bInRow = pBox->isVisible() && rc.top() <= nRow && rc.bottom() >= nRow &&
                            rc.left() > pCaption->geometry().left();
        if (bInRow && (!pNearest || pBox->x() < pNearest->x())) {
            pNearest = pBox;
        }
    }
    return pNearest;
}

}  // namespace

CWalker::CWalker(MainWindow& window, CHands& hands, const QString& strFolder,
                 const std::vector<Field>& listField, const QString& strPictures)
    : m_window(window), m_hands(hands), m_strFolder(strFolder), m_strPictures(strPictures)
{
    addDialogSteps(listField);
    addSolveSteps();
}

void CWalker::addDialogSteps(const std::vector<Field>& listField)
{
    const auto project = [] { return modal<NewProjectDialog>() != nullptr; };
    const QString strFromFrames = QStringLiteral("New from Frames...");
    m_listStep = {
        {QStringLiteral("window"), Ends::Later, [this] { return m_window.isVisible(); },
         [this, strFromFrames] {
             if (QAbstractButton* pButton = buttonOf(&m_window,
                                                     strFromFrames)) {  // the button of an empty window
                 m_hands.click(pButton, strFromFrames);
             } else {
                 m_hands.clickMenu(m_window.menuBar(), QStringLiteral("File"));
             }
         }},
        {QStringLiteral("menu"), Ends::Later, [project] { return project() || openMenu(); },
         [this] {
             if (QMenu* pMenu = openMenu()) {
                 m_hands.clickEntry(pMenu, QStringLiteral("New Project..."));
             }
         }},
        {QStringLiteral("new_project"), Ends::Later, project,
         [this] {
             const QString strButton = QStringLiteral("Add Folder...");
             m_hands.click(buttonOf(modal<NewProjectDialog>(), strButton), strButton);
         }},
        {QStringLiteral("folder"), Ends::AtOnce, [] { return modal<QFileDialog>() != nullptr; },
         [this] {
             auto* pDialog = modal<QFileDialog>();
             m_hands.press(pDialog, Qt::Key_A, Qt::ControlModifier);
             m_hands.type(pDialog, m_strFolder);
             m_hands.press(pDialog, Qt::Key_Return);
         }},
        {QStringLiteral("frames_read"), Ends::AtOnce,
         [project] {
             return project() &&
                    modal<NewProjectDialog>()->m_pFrames->m_pHeaders->m_pStopFactsButton->isHidden() &&
                    !modal<NewProjectDialog>()->project().listFrame.isEmpty();
         },
         [] {}}};
    for (const Field& field : listField) {
        m_listStep.push_back({QStringLiteral("field"), Ends::AtOnce, project,
                              [this, field] { fill(modal<NewProjectDialog>(), field); }});
    }
    m_listStep.push_back(
        {QStringLiteral("filled"), Ends::Later, project, [this] {
             auto* pDialog = modal<NewProjectDialog>();
             m_hands.note(QStringLiteral("the dialog says: ") + pDialog->m_pProblemLabel->text());
             m_hands.click(buttonOf(pDialog, QStringLiteral("Create")), QStringLiteral("Create"));
         }});
}

void CWalker::addSolveSteps()
{
    auto* pRoad = m_window.findChild<RoadDock*>();
    const auto says = [pRoad](const char* pszText) {
        return !QApplication::activeModalWidget() && !QApplication::activePopupWidget() &&
               pRoad->m_pSolveButton->text() == QLatin1String(pszText);
    };
    // The first frame is shown, and the program is idle again.
    const auto opened = [this, says] {
        const auto* pView = m_window.findChild<BaseImgView*>();
        return says("Solve") && !pView->scene()->sceneRect().isEmpty() && m_window.isEnabled() &&
               m_hands.seconds() - m_dfWaitSince > g_dfSecondsToLook;
    };
    m_listStep.push_back({QStringLiteral("opened"), Ends::Later, opened, [this] {
                              m_dfSolveFrom = m_hands.seconds();
                              m_hands.click(buttonOfTool(m_window, QStringLiteral("Solve")),
                                            QStringLiteral("Solve"));
                          }});
    m_listStep.push_back({QStringLiteral("solving"), Ends::AtOnce, [says] { return says("Stop"); }, [] {}});
    m_listStep.push_back({QStringLiteral("solved"), Ends::AtOnce, [says] { return says("Solve"); },
                          [this] { m_dfSolve = m_hands.seconds() - m_dfSolveFrom; }});
}

void CWalker::fill(QWidget* pDialog, const Field& field)
{
    QWidget* pCaption = captionOf(pDialog, field.first);
    if (!pCaption) {
        m_hands.click(nullptr, QStringLiteral("\"%1\"").arg(field.first));
        return;
    }
    auto* pRadio = qobject_cast<QRadioButton*>(pCaption);
    if (pRadio && !pRadio->isChecked()) {
        m_hands.click(pRadio, field.first);
    }
    if (QAbstractSpinBox* pBox = fieldBeside(pCaption)) {
        m_hands.click(pBox->findChild<QLineEdit*>(), QStringLiteral("field \"%1\"").arg(field.first));
        m_hands.press(pDialog, Qt::Key_A, Qt::ControlModifier);
        m_hands.type(pDialog, field.second);
    }
}

void CWalker::start()
{
    later();
}

void CWalker::later()
{
    QTimer::singleShot(g_nPause, this, &CWalker::step);
}

void CWalker::picture(const QString& strName)
{
    if (m_strPictures.isEmpty()) {
        return;
    }
    QTest::qWait(2 * g_nPause);  // until it has been drawn
    QScreen* pScreen = m_window.screen();
    const QPixmap pixmap = pScreen->grabWindow(0, 0, 0, m_window.width(), m_window.height());
    pixmap.save(
        QStringLiteral("%1/%2_%3.png").arg(m_strPictures).arg(m_nStep, 2, 10, QLatin1Char('0')).arg(strName));
}

void CWalker::step()
{
    if (m_bEnded) {
        return;
    }
    later();  // before an action that may run another event loop
    if (m_bWithinStep) {
        return;
    }
    const bool bOver = m_nStep == m_listStep.size() || !m_hands.failure().isEmpty();
    if (!bOver && m_listStep[m_nStep].fnReady()) {
        m_bWithinStep = true;
        picture(m_listStep[m_nStep].strName);
        m_dfWaitSince = m_hands.seconds();
        const Step& next = m_listStep[m_nStep++];
        m_bWithinStep = next.ends == Ends::AtOnce;
        next.fnDo();
        m_bWithinStep = false;
        return;
    }
    const bool bLate = m_hands.seconds() - m_dfWaitSince > g_dfLongestWait;
    const auto* pQuestion = modal<QMessageBox>();
    if (!bOver && !bLate && !pQuestion) {
        return;
    }
    if (pQuestion) {
        m_hands.note(QStringLiteral("a question stands in the way: ") + pQuestion->text());
    }
    if (m_nStep < m_listStep.size()) {
        picture(QStringLiteral("end"));
        m_hands.click(nullptr, QStringLiteral("way to the step \"%1\"").arg(m_listStep[m_nStep].strName));
    }
    m_bEnded = true;
    emit ended();
}

}  // namespace tessera
