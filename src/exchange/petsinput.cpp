#include "exchange/petsinput.h"

#include "records/sealedfile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

QByteArray number(double dfValue, int nDecimals)
{
    return QByteArray::number(dfValue, 'f', nDecimals);
}

double fullTurn(double dfDegrees)
{
    const double dfRest = std::fmod(dfDegrees, 360);
    return dfRest < 0 ? dfRest + 360 : dfRest;
}

const char* geometryName(RotationKind kind)
{
    switch (kind) {
        case RotationKind::Stepped:
            return "static";
        case RotationKind::Precession:
            return "precession";
        default:
            return "continuous";
    }
}

/// Half of the angle that a frame covers, degrees: of the rotation, or of the cone.
double semiAngle(const ExchangeGeometry& geometry)
{
    switch (geometry.rotation.kind) {
        case RotationKind::Stepped:
            return 0;
        case RotationKind::Precession:
            return geometry.rotation.dfPrecessionAngle;
        default:
            return geometry.dfWidth / 2;
    }
}

/// The d* at the edge of the frame that is closest to the beam, Å⁻¹.
double reachToEdge(const ExchangeGeometry& geometry)
{
    const double dfPixels = std::max({geometry.beam.dfX, geometry.sizeFrame.width() - geometry.beam.dfX,
                                      geometry.beam.dfY, geometry.sizeFrame.height() - geometry.beam.dfY});
    return dfPixels * geometry.source.dfPixelSize;
}

QByteArray distortionText(const PlaneTerms<double>& plane)
{
    const Distortion ellipse = distortionOf(-plane.ellipseCos - plane.stretchingCos,
                                            -plane.ellipseSin - plane.stretchingSin);
    return "# The frames keep their distortion: ellipse " + number(100 * ellipse.dfAmplitude, 3) +
           " % along " + number(ellipse.dfAzimuth, 2) + " degrees, barrel " + number(100 * plane.radial, 3) +
           " %, spiral " + number(100 * plane.spiral, 3) + " %.\n";
}

}  // namespace

QByteArray petsInput(const ExchangeGeometry& geometry, const PetsOptions& options)
{
    const double dfOmega = fullTurn(geometry.source.plane.axis);
    QByteArray bytes = "# Tessera " TESSERA_VERSION " " + sealPlace() + '\n';
    bytes += "# Series " + options.strName.toUtf8() + '\n';
    bytes += "lambda " + number(geometry.dfWavelength, 6) + '\n';
    bytes += "Aperpixel " + number(geometry.source.dfPixelSize, 8) + '\n';
    bytes += "phi " + number(semiAngle(geometry), 4) + '\n';
    bytes +=
        "# Counted counter-clockwise on the screen. Should few peaks be indexed, the other sense would be\n";
    bytes += "# " + number(fullTurn(-dfOmega), 3) + ", and the axis to the other side " +
             number(fullTurn(dfOmega + 180), 3) + " or " + number(fullTurn(180 - dfOmega), 3) + ".\n";
    bytes += "omega " + number(dfOmega, 3) + '\n';
    bytes += QByteArray("geometry ") + geometryName(geometry.rotation.kind) + '\n';
    bytes += "bin 1\n";
    bytes += "reflectionsize " + number(std::max(3.0, std::round(options.dfSpotDiameter)), 0) + '\n';
    bytes += "dstarmax " + number(options.dfHighest > 0 ? options.dfHighest : reachToEdge(geometry), 3) +
             '\n';
    bytes += "dstarmin 0.05\n";
    bytes += distortionText(geometry.source.plane);
    bytes += "\n# file, alpha and beta in degrees, in the middle of the frame\nimagelist\n";
    for (int n = 0; n < options.listFile.size(); ++n) {
        bytes += options.listFile[n].toUtf8() + ' ' + number(options.listAlpha[n], 4).rightJustified(10) +
                 "     0.0000\n";
    }
    bytes += "endimagelist\n";
    return sealed(bytes);
}

}  // namespace tessera
