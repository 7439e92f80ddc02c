// DemoSeries: has a simulated series made by the simulator's own program.
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>

namespace tessera {

/// Where the demo comes from, and what it is like.
struct DemoOptions {
    QString strProgram;  ///< of the simulator
    QString strFolder;   ///< that it is kept in; made when it is not there
    int nFrames = 120;
    int nSize = 512;  ///< pixels of a frame along each side

    /// The simulator beside the program that runs, or of the system; a folder of the user's own data.
    static DemoOptions ofUser();
};

/// Makes the demo beside its place and moves it there when it is whole, so that what is there is whole. A
/// process of its own, as the simulator, which judges the core, shares no code with it.
class DemoSeries : public QObject {
    Q_OBJECT

public:
    /// Makes nothing yet.
    explicit DemoSeries(const DemoOptions& options, QObject* pParent = nullptr);
    /// Stops the making, of which nothing stays.
    ~DemoSeries() override;

    /// The project file, wherever it is there by now.
    QString projectFile() const;
    /// Whether the series is being made.
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    /// Emits made() at once when the series is there from before, and else when it is.
    void start();
    /// Ends the making and emits stopped().
    void stop();

signals:
    /// So many frames of all are written.
    void progress(int nFrames, int nAll);
    /// The series is there; the project file with its path.
    void made(const QString& strProject);
    /// The user had it stopped.
    void stopped();
    /// The series could not be made.
    void failed(const QString& strReason);

private:
    void tellProgress();
    void processEnded();
    bool moveIntoPlace(QString& strReason);

    DemoOptions m_options;
    QProcess m_process;
    QTimer m_timer;
    std::unique_ptr<QTemporaryDir> m_pFolder;  ///< of the part that is done
    bool m_bStopping = false;
};

}  // namespace tessera
