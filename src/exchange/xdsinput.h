// XDS input: XDS.INP, the instructions of XDS for a series of SMV frames.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QByteArray>
#include <QRect>
#include <QString>

#include <vector>

namespace tessera {

/// What the file tells besides the geometry.
struct XdsOptions {
    QString strName;  ///< name of the series
    QString
        strTemplate;  ///< template of the frames with "?" for each digit, relative to the folder of XDS.INP
    int nMinimumValid = 1;  ///< counts of the smallest valid pixel; 0 for a camera that counts electrons
    int nOverload = 65000;  ///< counts
    double dfHighest = 0;   ///< resolution limit, Å; 0: up to the corners of the frames
    std::vector<QRect> listUntrusted;  ///< areas without a measurement, pixels
    double dfDistortion = 0;           ///< greatest correction of the tables, pixels; 0: there are none
    QString strColumnTable;            ///< name of the table for columns
    QString strRowTable;               ///< name of the table for rows
};

/// The text of XDS.INP. In the frame of XDS, x points to the right, y down, and z away from the source, so
/// that y and z of an axis or a basis of ExchangeGeometry are negated. ORGX and ORGY count pixels from 1 at
/// the centre of the first.
///
/// The text makes XDS begin the indexing from spots, with cell and orientation where they are known, and
/// never refine the distance of the detector, which for short wavelengths cannot be separated from the
/// cell. Tables that correct the lens are mentioned in comments, and the user can put them in force; XDS
/// accepts them only for a detector called PILATUS. The text is sealed (sealedfile.h), as users edit it.
QByteArray xdsInput(const ExchangeGeometry& geometry, const XdsOptions& options);

}  // namespace tessera
