// RunFrames: which frames of which series a run has taken, and how many of them two runs share.
#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <vector>

namespace tessera {

/// The frames that a run has measured, in a form that holds wherever their files lie.
struct RunFrames {
    QByteArray bytesSeries;            ///< hash over all files of the series, also those not taken; empty:
                                       ///< not known
    std::vector<int> listNumber;       ///< of the taken frames in the series, from 0, ascending
    std::vector<QByteArray> listHash;  ///< of the files of the taken frames, sorted, each once; empty where
                                       ///< a file holds many frames

    int count() const { return int(listNumber.size()); }
};

/// By the record of a run: its files, the frames that were asked for and left out, and how many are summed.
/// Frames that were left over from the sums are not taken.
RunFrames framesOfRun(const QJsonObject& run);

/// How many frames two runs share: of one series by their numbers, else by the hashes of their files.
int sharedFrames(const RunFrames& one, const RunFrames& other);

/// Whether two runs share so many frames that their intensities are not independent: more than a tenth of
/// those of the smaller one. Fewer may be equal by chance, as frames without a beam are, and a tenth of
/// intensities that agree with themselves hardly moves a mean.
bool isDependent(const RunFrames& one, const RunFrames& other);

}  // namespace tessera
