#include "tools/windowkilltest/workingwindow.h"

#include "window/application.h"
#include "window/history/interrupteddialog.h"
#include "window/history/workkeeper.h"
#include "window/mainwindow.h"
#include "window/pages/framespage.h"
#include "window/pages/peaksearchpage.h"
#include "workstate/workstatefile.h"

#include <QCryptographicHash>
#include <QDoubleSpinBox>
#include <QFile>
#include <QListWidget>
#include <QPushButton>

#include <random>

namespace tessera {

namespace {

class WorkingWindow {
public:
    WorkingWindow(const QString& strAccount, unsigned nSeed) : m_account(strAccount), m_random(nSeed)
    {
        m_account.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
        m_window.show();
    }

    void begin(const QString& strProject, const QString& strFolder)
    {
        m_window.keepWork(strFolder);
        m_pKeeper = m_window.findChild<WorkKeeper*>();
        QObject::connect(m_pKeeper, &WorkKeeper::taken,
                         [this](const WorkState& state, const QString& strStep) {
                             tell("taken " + sumOf(state) + ' ' + strStep.toUtf8());
                         });
        QObject::connect(m_pKeeper, &WorkKeeper::kept,
                         [this](const QString& strStep) { tell("kept " + strStep.toUtf8()); });
        if (auto* pDialog = m_window.findChild<InterruptedDialog*>()) {
            pDialog->m_pRestoreButton->click();
            tell("restored " + sumOf(m_window.workState()));
        } else {
            m_window.openFiles({strProject});
            tell("opened");
        }
        tell("ready");
    }

    /// Makes a step as a user does, and waits until its state is stored.
    void makeStep()
    {
        const auto* pSearch = m_window.findChild<PeakSearchPage*>();
        const auto* pFrames = m_window.findChild<FramesPage*>();
        switch (m_random() % 8) {
            case 0:
                m_window.solve();
                break;
            case 1:
                pSearch->m_pThresholdSpin->setValue(1 + double(m_random() % 100) / 10);
                m_window.runPeakHunting();
                break;
            case 2:
                m_window.runShiftEvaluation();
                break;
            case 3:
                m_window.peakReduction3D();
                break;
            default:
                pFrames->m_pRotationAxisSpin->setValue(double(m_random() % 1000) / 10);
                break;
        }
        m_pKeeper->keep(m_window.workState(), QStringLiteral("step %1").arg(++m_nStep));
        m_pKeeper->wait();
        QCoreApplication::processEvents();
    }

    void discardOthers(const QString& strFolder)
    {
        QCoreApplication::sendPostedEvents(nullptr,
                                           QEvent::DeferredDelete);  // deletes the window that has asked
        QStringList listReason;
        for (Leftover& leftover : takeLeftovers(strFolder, listReason)) {
            static_cast<void>(leftover.remove());
        }
    }
    void end()
    {
        m_window.close();
        tell("ended");
    }

private:
    static QByteArray sumOf(const WorkState& state)
    {
        return QCryptographicHash::hash(workStateBytes(state), QCryptographicHash::Md5).toHex();
    }
    void tell(const QByteArray& bytesLine) { m_account.write(bytesLine + '\n'); }

    QFile m_account;
    std::mt19937 m_random;
    MainWindow m_window;
    WorkKeeper* m_pKeeper = nullptr;
    int m_nStep = 0;
};

}  // namespace

int runWorkingWindow(int argc, char** argv)
{
    const Application application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Lumenarc"));
    QCoreApplication::setApplicationName(QStringLiteral("Tessera"));
    const QStringList listArgument = QCoreApplication::arguments();
    const bool bEnd = listArgument[1] == QLatin1String("--end");
    WorkingWindow window(listArgument[5], listArgument[4].toUInt());
    window.begin(listArgument[2], listArgument[3]);
    for (bool bGoOn = true; bGoOn; bGoOn = !bEnd) {  // endless until it is killed
        window.makeStep();
    }
    window.discardOthers(listArgument[3]);
    window.end();
    return 0;
}

}  // namespace tessera
