// SideTexts: what programs of acquisition left in words beside the frames.
#pragma once

#include "imagefiles/frameheader.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

namespace tessera {

/// Numbers as a FrameHeader has them, each with the file and the key that it stood under: "cRED_log.txt:
/// Camera length". The first text that tells a number is believed; another one that contradicts it is a
/// doubt.
struct SideTexts {
    ToldNumber kilovolts;      ///< kV
    ToldNumber wavelength;     ///< Å
    ToldNumber pixelSize;      ///< Å⁻¹
    ToldNumber cameraLength;   ///< mm
    ToldNumber detectorPixel;  ///< µm
    ToldNumber rotationAxis;   ///< degrees, in whatever sense the program had it: always a doubt
    ToldNumber exposure;       ///< seconds
    ToldNumber tiltStart;      ///< at the start of the series, degrees
    ToldNumber tiltEnd;        ///< at its end, degrees
    ToldNumber tiltStep;       ///< of a frame, degrees
    /// Tilts of single frames by the names of their files, or of the images of a stack by "stack.mrc#12".
    QHash<QString, double> hashTilt;
    QString strTiltSource;
    QStringList listDoubt;
};

/// Takes a text of lines "key: value" or "key = value", in which the units stand behind the value or in the
/// key, in any case of letters. What the keys do not name is passed over.
/// @param strName  of the file, for the sources
void takeSideText(const QByteArray& bytesText, const QString& strName, SideTexts& texts);

/// The same of a JSON text: the numbers of all its objects, by their names.
/// @return whether it is one
bool takeSideJson(const QByteArray& bytesText, const QString& strName, SideTexts& texts);

/// The same of a text with a section for each image, "[ZValue = 3]", or file, which names it as SubFramePath.
/// Source: the format .mdoc of tilt series, IMOD documentation.
/// @param strFrameFile  the file that the text stands beside, without folder: its images are "FILE#n"
void takeMdoc(const QByteArray& bytesText, const QString& strName, const QString& strFrameFile,
              SideTexts& texts);

/// Reads the texts that stand beside the first frame: .txt, .log, .mdoc, .yaml, .yml, .ini and .json below
/// 1 MB. Those that this system writes itself are none of them.
SideTexts readSideTexts(const QStringList& listFrame);

}  // namespace tessera
