// XDS.INP: the instructions of XDS for a series of SMV frames.
#pragma once

#include "exchange/exchangegeometry.h"

#include <QByteArray>
#include <QRect>
#include <QString>

#include <vector>

namespace tessera {

struct XdsOptions {
    QString strName;        ///< of the series
    QString strTemplate;    ///< of the frames, "?" for each digit, from the folder of XDS.INP
    int nMinimumValid = 1;  ///< counts; 0 for a camera whose pixels count single electrons
    int nOverload = 65000;  ///< counts
    double dfHighest = 0;   ///< Å, resolution; 0: as far as the frames' corners
    std::vector<QRect> listUntrusted;
    double dfDistortion = 0;  ///< pixels, the most that the tables below correct; 0: there are none
    QString strColumnTable;   ///< name of the table for columns, and of that for rows
    QString strRowTable;
};

/// Frame of XDS: x to the right, y down, z away from the source, so that an axis or a basis of
/// ExchangeGeometry has y and z negated. ORGX and ORGY count pixels from 1 in the middle of the first.
///
/// Starts indexing from spots, tells the cell and its orientation where they are known, and leaves the
/// detector's distance out of all refinements: with the short waves of electrons it goes with the cell.
/// Tables that undo the lens are told in remarks, to be put in force by the user: with them the detector has
/// to be called PILATUS. Sealed (sealedfile.h), as users go on in this file.
QByteArray xdsInput(const ExchangeGeometry& geometry, const XdsOptions& options);

}  // namespace tessera
