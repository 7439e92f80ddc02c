// The names that saved images get, and the kinds that the dialogs offer.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// The filters of the dialog that asks for the name of one image, in its order.
const QStringList& imageNameFilters();

/// A name with the extension of the chosen filter appended, unless its suffix is one of the filters' own,
/// in either case of letters: "x.tif" with the PNG filter becomes "x.tif.png". An unknown filter gives
/// ".bmp". An empty name stays empty.
QString completedImageName(const QString& strName, const QString& strSelectedFilter);

/// The kinds of picture that a series can be saved as, as the dialog shows them.
const QStringList& imageTypeItems();

/// What stands between the brackets of such an item, with the dot; empty without brackets.
QString imageTypeExtension(const QString& strItem);

}  // namespace tessera
