// CBatchRoad: the stages from frames to result files, without a user to place, tune or look.
#pragma once

#include "batch/batchoptions.h"
#include "batch/batchreport.h"
#include "dataset/dataset.h"
#include "reciprocal/indexing.h"
#include "road/filestamp.h"

#include <QJsonObject>
#include <QRegularExpression>
#include <QString>

namespace tessera {

/// Walks the stages that the options ask for, each through the same function as the window, and
/// gathers what was found. A stage that fails says why in red, ends the walk and has written nothing.
class CBatchRoad {
public:
    CBatchRoad(const BatchOptions& options, CBatchReport& report);

    /// @return whether the last stage asked for was reached and its files stand
    bool run();

    /// What was found up to the end of the walk.
    QJsonObject summary() const { return m_summary; }

    /// Folder, slash and base name of the result files; empty while no input has been opened.
    QString resultBase() const;

private:
    bool open();
    bool openInput();
    void takeGeometry();
    bool prepareResultFolder();
    bool checkFrameFiles();
    bool loadEarlierStages();
    bool loadShifts();
    bool loadPeaks();
    bool loadCell(const QString& strFileName);
    QString earlierCellFile() const;
    bool writeShifts(const QString& strFileName);
    bool runStages();
    bool runExports();
    bool runStage(BatchStage stage);
    bool runShifts();
    bool runPeaks();
    bool runMerge();
    bool runCell();
    bool runIndex();
    bool runRefine();
    void choosePairLimits();
    int jobs() const;
    void refineCell(const QList<Peak3D>& listIndexed);
    void reportCentreOffset(const IndexingResult& result);
    void reportRotationSense(const QList<Peak3D>& listIndexed);
    void roundParameters();
    bool fail(const QString& strText);
    bool written(const FileStamp& stamp, const QString& strFile);
    void noteLastRedLine();
    void beginPart();
    void markFailed(const QString& strPart);
    QString sideReason(const QRegularExpression& which) const;
    QJsonObject cellObject() const;

    BatchOptions m_options;
    CBatchReport& m_report;
    DataSet m_dataSet;
    MappingParameters m_mapping;
    QJsonObject m_summary;
    QJsonObject m_times;
    QString m_strInputDir;         ///< folder of the project or the first image; results may go elsewhere
    QStringList m_listSideReason;  ///< what opening had to say of files that it could not use
    int m_nRedBefore = 0;          ///< red lines before the part of the road under way
    bool m_bOpened = false;
};

}  // namespace tessera
