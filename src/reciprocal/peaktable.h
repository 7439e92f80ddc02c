// Peak table: the 26 columns of the reflections in use, as texts.
#pragma once

#include "app/dataset/dataset.h"

#include <QLocale>
#include <QString>
#include <QVector>

/// Number of columns of the peak table.
constexpr int g_nPeakTableColumns = 26;

/// One row of texts per record, from the record, the geometry of the data set and its space group.
///
/// Columns 0 to 6, 11, 24 and 25 are plain whole numbers, "*" for the indices of a record that isn't indexed
/// within `dfIndexThreshold`; all others go through `locale`.
QVector<QVector<QString>> peakTableRows(const QList<Peak3D>& listPeak, const DataSet& dataSet,
                                        double dfIndexThreshold, const QLocale& locale);
