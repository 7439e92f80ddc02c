#include "exchange/xdsinput.h"

#include "records/sealedfile.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

QByteArray number(double dfValue, int nDecimals)
{
    return QByteArray::number(dfValue, 'f', nDecimals);
}

DoubleVector inXds(const DoubleVector& vec)
{
    return {vec[0], -vec[1], -vec[2]};
}

QByteArray numbers(const DoubleVector& vec, int nDecimals)
{
    return number(vec[0], nDecimals) + ' ' + number(vec[1], nDecimals) + ' ' + number(vec[2], nDecimals);
}

double lengthOf(const DoubleVector& vec)
{
    return std::sqrt(dot(vec, vec));
}

double angleBetween(const DoubleVector& a, const DoubleVector& b)
{
    return degrees(std::acos(std::clamp(dot(a, b) / lengthOf(a) / lengthOf(b), -1.0, 1.0)));
}

/// The d* at the corner of the frames that is farthest from the beam, Å⁻¹.
double reachOf(const ExchangeGeometry& geometry)
{
    double dfFurthest = 0;
    for (const double dfX : {0.0, geometry.sizeFrame.width() - 1.0}) {
        for (const double dfY : {0.0, geometry.sizeFrame.height() - 1.0}) {
            dfFurthest = std::max(dfFurthest, std::hypot(dfX - geometry.beam.dfX, dfY - geometry.beam.dfY));
        }
    }
    const double dfAngle = std::atan(dfFurthest * geometry.dfPixel / geometry.dfDistance);
    return 2 * std::sin(dfAngle / 2) / geometry.dfWavelength;
}

/// A text that is written line by line, with comments.
class CXdsText {
public:
    void remark(const QByteArray& bytes) { m_bytes += "! " + bytes + '\n'; }
    void line(const QByteArray& bytes) { m_bytes += ' ' + bytes + '\n'; }
    void gap() { m_bytes += '\n'; }
    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

void addDetector(CXdsText& text, const ExchangeGeometry& geometry, const XdsOptions& options)
{
    text.line("DETECTOR= ADSC  MINIMUM_VALID_PIXEL_VALUE= " + QByteArray::number(options.nMinimumValid) +
              "  OVERLOAD= " + QByteArray::number(options.nOverload));
    text.line("NX= " + QByteArray::number(geometry.sizeFrame.width()) +
              "  NY= " + QByteArray::number(geometry.sizeFrame.height()) +
              "  QX= " + number(geometry.dfPixel, 6) + "  QY= " + number(geometry.dfPixel, 6));
    text.remark("The pixel size is a convention of these frames; the distance follows from it and from the");
    text.remark("pixel size in reciprocal space: " +
                number(geometry.dfPixel / geometry.dfDistance / geometry.dfWavelength, 8) + " 1/A.");
    text.line("DETECTOR_DISTANCE= " + number(geometry.dfDistance, 4));
    text.line("ORGX= " + number(geometry.beam.dfX + 1, 3) + "  ORGY= " + number(geometry.beam.dfY + 1, 3));
    text.line("DIRECTION_OF_DETECTOR_X-AXIS= 1 0 0");
    text.line("DIRECTION_OF_DETECTOR_Y-AXIS= 0 1 0");
    text.remark("The crystal stands in vacuum; thin sensors need no correction for the path in them.");
    text.line("AIR= 0.0  SENSOR_THICKNESS= 0");
    text.line("TRUSTED_REGION= 0.0 1.41");
    text.line("VALUE_RANGE_FOR_TRUSTED_DETECTOR_PIXELS= 10 30000");
    for (const QRect& rc : options.listUntrusted) {
        // XDS excludes the limits themselves and counts from 1.
        text.line("UNTRUSTED_RECTANGLE= " + QByteArray::number(rc.left()) + ' ' +
                  QByteArray::number(rc.right() + 2) + ' ' + QByteArray::number(rc.top()) + ' ' +
                  QByteArray::number(rc.bottom() + 2));
    }
}

void addBeamAndAxis(CXdsText& text, const ExchangeGeometry& geometry)
{
    text.remark("Electrons are not polarised, and the beam runs along +z of this program.");
    text.line("X-RAY_WAVELENGTH= " + number(geometry.dfWavelength, 6));
    text.line("INCIDENT_BEAM_DIRECTION= 0 0 1");
    text.line("FRACTION_OF_POLARIZATION= 0.5  POLARIZATION_PLANE_NORMAL= 0 1 0");
    text.remark("x to the right, y down. If a cell comes out that few spots fit, try the opposite axis.");
    text.line("ROTATION_AXIS= " + numbers(inXds(geometry.axis), 6));
    text.line("OSCILLATION_RANGE= " + number(geometry.dfWidth, 6));
    text.line("STARTING_ANGLE= " + number(geometry.dfStart, 5) +
              "  STARTING_FRAME= " + QByteArray::number(geometry.numbering.first()));
    if (geometry.dfWorstAngle > 0.001) {
        text.remark("Equal steps are assumed; the angle of a frame is off by up to " +
                    number(geometry.dfWorstAngle, 3) + " degrees.");
    }
    if (geometry.rotation.kind == RotationKind::Precession) {
        text.remark("The frames were taken with beam precession, by " +
                    number(geometry.rotation.dfPrecessionAngle, 3) +
                    " degrees, which this program does not know of.");
    } else if (geometry.rotation.kind == RotationKind::Stepped) {
        text.remark("The crystal stood still during each frame; the program assumes that it turned.");
    }
}

void addFrames(CXdsText& text, const ExchangeGeometry& geometry, const XdsOptions& options)
{
    text.line("NAME_TEMPLATE_OF_DATA_FRAMES= " + options.strTemplate.toUtf8() + " SMV");
    const QByteArray bytesRange = QByteArray::number(geometry.numbering.first()) + ' ' +
                                  QByteArray::number(geometry.numbering.last());
    text.line("DATA_RANGE= " + bytesRange);
    text.line("SPOT_RANGE= " + bytesRange);
    text.line("BACKGROUND_RANGE= " + QByteArray::number(geometry.numbering.first()) + ' ' +
              QByteArray::number(std::min(geometry.numbering.first() + 9, geometry.numbering.last())));
    for (const auto& [nFrom, nTo] : geometry.numbering.missing()) {
        text.line("EXCLUDE_DATA_RANGE= " + QByteArray::number(nFrom) + ' ' + QByteArray::number(nTo));
    }
    if (geometry.worstBeam() > 1) {
        text.remark("The beam wanders by up to " + number(geometry.worstBeam(), 1) +
                    " pixels about ORGX, ORGY, which this program cannot follow.");
    }
    if (options.dfDistortion > 0) {
        text.remark("The frames keep the lens distortion, up to " + number(options.dfDistortion, 1) +
                    " pixels. To correct it, write PILATUS instead of");
        text.remark("ADSC below and enable these two lines:");
        text.remark("X-GEO_CORR= " + options.strColumnTable.toUtf8());
        text.remark("Y-GEO_CORR= " + options.strRowTable.toUtf8());
    }
}

void addCell(CXdsText& text, const ExchangeGeometry& geometry)
{
    if (!geometry.bCell) {
        text.line("SPACE_GROUP_NUMBER= 0");
        return;
    }
    const auto& [a, b, c] = geometry.aDirect;
    text.remark("The cell in force, in P 1, with its orientation at angle 0. To search for it, write 0");
    text.remark("and delete the four lines below it.");
    text.line("SPACE_GROUP_NUMBER= 1");
    text.line("UNIT_CELL_CONSTANTS= " + number(lengthOf(a), 4) + ' ' + number(lengthOf(b), 4) + ' ' +
              number(lengthOf(c), 4) + ' ' + number(angleBetween(b, c), 3) + ' ' +
              number(angleBetween(c, a), 3) + ' ' + number(angleBetween(a, b), 3));
    text.line("UNIT_CELL_A-AXIS= " + numbers(inXds(a), 5));
    text.line("UNIT_CELL_B-AXIS= " + numbers(inXds(b), 5));
    text.line("UNIT_CELL_C-AXIS= " + numbers(inXds(c), 5));
}

/// The low-resolution limit, Å: there are no reflections beyond the longest edge.
double lowestResolution(const ExchangeGeometry& geometry)
{
    double dfLowest = 20;
    for (const DoubleVector& vec : geometry.aDirect) {
        dfLowest = std::max(dfLowest, 1.1 * lengthOf(vec));
    }
    return dfLowest;
}

/// The least distance of spots, pixels: the default of 6, or less where rows of the lattice are closer.
int separationOf(const ExchangeGeometry& geometry)
{
    const double dfPerPixel = geometry.dfPixel / geometry.dfDistance / geometry.dfWavelength;
    double dfClosest = 12;
    for (const DoubleVector& vec : geometry.aReciprocal) {
        if (geometry.bCell) {
            dfClosest = std::min(dfClosest, lengthOf(vec) / dfPerPixel);
        }
    }
    return std::max(2, int(dfClosest / 2));
}

void addSearchAndRefinement(CXdsText& text, const ExchangeGeometry& geometry, const XdsOptions& options)
{
    const double dfHighest = options.dfHighest > 0 ? options.dfHighest : 1 / reachOf(geometry);
    text.line("INCLUDE_RESOLUTION_RANGE= " + number(lowestResolution(geometry), 1) + ' ' +
              number(dfHighest, 3));
    text.remark("Spots of electrons are small and weak.");
    text.line("STRONG_PIXEL= 3.0  MINIMUM_NUMBER_OF_PIXELS_IN_A_SPOT= 3");
    const int nSeparation = separationOf(geometry);
    text.line("SPOT_MAXIMUM-CENTROID= 3.0  SEPMIN= " + QByteArray::number(nSeparation) +
              "  CLUSTER_RADIUS= " + QByteArray::number(nSeparation / 2));
    text.remark("Without POSITION (the distance): at this wavelength it correlates with the cell.");
    text.line("REFINE(IDXREF)= BEAM AXIS ORIENTATION CELL");
    text.line("REFINE(INTEGRATE)= ");
    text.line("REFINE(CORRECT)= BEAM AXIS ORIENTATION CELL");
}

}  // namespace

QByteArray xdsInput(const ExchangeGeometry& geometry, const XdsOptions& options)
{
    CXdsText text;
    text.remark("Tessera " TESSERA_VERSION " " + sealPlace());
    text.remark("Series " + options.strName.toUtf8());
    text.line("JOB= XYCORR INIT COLSPOT IDXREF");
    text.remark("and then: JOB= DEFPIX INTEGRATE CORRECT");
    text.gap();
    addFrames(text, geometry, options);
    text.gap();
    addBeamAndAxis(text, geometry);
    text.gap();
    addDetector(text, geometry, options);
    text.gap();
    addCell(text, geometry);
    text.gap();
    addSearchAndRefinement(text, geometry, options);
    return sealed(text.bytes());
}

}  // namespace tessera
