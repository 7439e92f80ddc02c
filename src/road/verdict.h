// Judgement: a rating of the result of a part of the road, in one word and one sentence.
#pragma once

#include <QList>
#include <QString>

namespace tessera {

/// The rating of a result.
enum class Verdict { Good, Doubtful, Bad };

/// "good", "doubtful" or "bad".
QString verdictName(Verdict verdict);

/// The judgement of a part.
struct Judgement {
    QString strPart;  ///< name of the part in summaries: a stage, "axis" or "lattice"
    Verdict verdict = Verdict::Good;
    QString strReason;    ///< a sentence that contains the figure
    double dfFigure = 0;  ///< the figure on which the verdict is based, in the units of the sentence
};

/// The line of the log: "Judgement of peaks: good. 5366 peaks on 113 frames."
QString judgementLine(const Judgement& judgement);

/// Adds a judgement. It replaces an existing one of the same part, since a stage may be run again.
void takeJudgement(QList<Judgement>& listJudgement, const Judgement& judgement);

/// The worst verdict; Good without judgements.
Verdict worstVerdict(const QList<Judgement>& listJudgement);

}  // namespace tessera
