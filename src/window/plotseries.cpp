#include "window/plotseries.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>

namespace tessera {

namespace {

/// A text as one cell of the table.
QString cell(QString strText)
{
    const bool bPlain = std::none_of(strText.begin(), strText.end(),
                                     [](QChar ch) { return QStringLiteral(",\"\n\r").contains(ch); });
    if (bPlain) {
        return strText;
    }
    return QLatin1Char('"') + strText.replace(QLatin1Char('"'), QStringLiteral("\"\"")) + QLatin1Char('"');
}

QString cell(double dfNumber)
{
    return QString::number(dfNumber, 'g', QLocale::FloatingPointShortest);
}

/// Empty where the list has no such member.
QString cellOf(const QVector<double>& vecNumber, int n)
{
    return n < vecNumber.size() ? cell(vecNumber[n]) : QString();
}

}  // namespace

QString csvOfSeries(const QString& strTitleX, const QString& strTitleY, const QVector<PlotSeries>& vecSeries)
{
    const bool bErrors = std::any_of(vecSeries.begin(), vecSeries.end(),
                                     [](const PlotSeries& series) { return !series.vecError.isEmpty(); });
    const bool bArrows = std::any_of(vecSeries.begin(), vecSeries.end(),
                                     [](const PlotSeries& series) { return !series.vecArrow.isEmpty(); });
    const auto line = [](const QStringList& listCell) {
        return listCell.join(QLatin1Char(',')) + QLatin1Char('\n');
    };
    QStringList listTitle = {QStringLiteral("series"), cell(strTitleX), cell(strTitleY)};
    listTitle += bErrors ? QStringList{QStringLiteral("error")} : QStringList();
    listTitle += bArrows ? QStringList{QStringLiteral("dx"), QStringLiteral("dy")} : QStringList();
    QString strTable = line(listTitle);
    for (const PlotSeries& series : vecSeries) {
        for (int n = 0; n < series.vecPoint.size(); ++n) {
            const QPointF& pt = series.vecPoint[n];
            QStringList listCell = {cell(series.strName), cell(pt.x()), cell(pt.y())};
            if (bErrors) {
                listCell.append(cellOf(series.vecError, n));
            }
            if (bArrows) {
                const bool bHas = n < series.vecArrow.size();
                listCell.append(bHas ? cell(series.vecArrow[n].x()) : QString());
                listCell.append(bHas ? cell(series.vecArrow[n].y()) : QString());
            }
            strTable += line(listCell);
        }
    }
    return strTable;
}

}  // namespace tessera
