// Image names: the names of saved images, and the kinds that the dialogs offer.
#pragma once

#include <QString>
#include <QStringList>

namespace tessera {

/// The filters of the dialog for the name of an image, in its order.
const QStringList& imageNameFilters();

/// Appends the extension of the chosen filter to a name, unless its suffix belongs to one of the filters,
/// in upper or lower case: "x.tif" with the PNG filter becomes "x.tif.png". For an unknown filter ".bmp" is
/// appended. An empty name stays empty.
QString completedImageName(const QString& strName, const QString& strSelectedFilter);

/// The kinds of picture in which a series can be saved, as the dialog shows them.
const QStringList& imageTypeItems();

/// The extension in the brackets of such an item, with the dot; empty without brackets.
QString imageTypeExtension(const QString& strItem);

}  // namespace tessera
