// SideTexts: texts of acquisition programs beside the frames.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

namespace tessera {

/// Numbers in the units of FrameHeader, each with its file and key: "cRED_log.txt: Camera length". The
/// first text with a number is used; a contradiction of another text becomes a doubt.
struct SideTexts {
    ToldNumber kilovolts;      ///< kV
    ToldNumber wavelength;     ///< Å
    ToldNumber pixelSize;      ///< Å⁻¹
    ToldNumber cameraLength;   ///< mm
    ToldNumber detectorPixel;  ///< µm
    ToldNumber rotationAxis;   ///< degrees, in an unknown sense, so always with a doubt
    ToldNumber exposure;       ///< seconds
    ToldNumber tiltStart;      ///< at the start of the series, degrees
    ToldNumber tiltEnd;        ///< at its end, degrees
    ToldNumber tiltStep;       ///< step of a frame, degrees
    /// Tilts of single frames, by the names of their files, or of images of a stack by "stack.mrc#12".
    QHash<QString, double> hashTilt;
    QString strTiltSource;  ///< where they were found
    QStringList listDoubt;  ///< doubts, in lines for the user
};

/// Reads a text of lines "key: value" or "key = value" in upper or lower case, with units after the value
/// or in the key. Unknown keys are ignored.
/// @param strName  name of the file
void takeSideText(const QByteArray& bytesText, const QString& strName, SideTexts& texts);

/// Does the same for a JSON text: the numbers of all its objects, by their names.
/// @return whether it is a JSON text
bool takeSideJson(const QByteArray& bytesText, const QString& strName, SideTexts& texts);

/// Does the same for a text with a section for each image, "[ZValue = 3]", or for each file, which
/// SubFramePath names. Source: the format .mdoc of tilt series, IMOD documentation.
/// @param strFrameFile  name of the file of the text, without folder; its images are "FILE#n"
void takeMdoc(const QByteArray& bytesText, const QString& strName, const QString& strFrameFile,
              SideTexts& texts);

/// Reads the texts in the folder of the first frame: .txt, .log, .mdoc, .yaml, .yml, .ini and .json below 1
/// MB, except those that this program writes itself.
SideTexts readSideTexts(const QStringList& listFrame);

}  // namespace tessera
