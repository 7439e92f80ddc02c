#include "simulate/crystalstructures.h"

const std::vector<CrystalStructure>& crystalStructures()
{
    static const auto text = [](const char* p) { return QString::fromUtf8(p); };
    // The generators are operations of the setting that the source uses; origin choice 1 for
    // silicon and anatase. Hydrogen of natrolite's water is left out: it scatters little.
    static const std::vector<CrystalStructure> listStructure = {
        {text("silicon"), text("F d -3 m"), text("Okada & Tokumaru (1984), J. Appl. Phys. 56, 314"),
         {5.4310, 5.4310, 5.4310, 90, 90, 90},
         {text("x,z,y"), text("y,x,z"), text("-x+1/4,y+1/4,z+1/4")},
         {{text("Si"), 0, 0, 0}}},
        {text("pyrope"), text("I a -3 d"), text("Novak & Gibbs (1971), Am. Mineral. 56, 791"),
         {11.459, 11.459, 11.459, 90, 90, 90},
         {text("y,z,x"), text("-x,y,z+1/2"), text("x+1/4,z+1/4,y+1/4")},
         {{text("Mg"), 0.125, 0, 0.25}, {text("Al"), 0, 0, 0}, {text("Si"), 0.375, 0, 0.25},
          {text("O"), 0.0329, 0.0502, 0.6534}}},
        {text("sodalite"), text("P -4 3 n"), text("Hassan & Grundy (1984), Acta Cryst. B40, 6"),
         {8.882, 8.882, 8.882, 90, 90, 90},
         {text("y,z,x"), text("-x,-y,z"), text("x+1/2,z+1/2,y+1/2")},
         {{text("Na"), 0.1778, 0.1778, 0.1778}, {text("Al"), 0.25, 0, 0.5}, {text("Si"), 0.25, 0.5, 0},
          {text("O"), 0.1390, 0.1494, 0.4383}, {text("Cl"), 0, 0, 0}}},
        {text("beryl"), text("P 6/m c c"), text("Morosin (1972), Acta Cryst. B28, 1899"),
         {9.215, 9.215, 9.192, 90, 90, 120},
         {text("x,y,-z"), text("x-y,x,z"), text("y,x,z+1/2")},
         {{text("Be"), 0.5, 0, 0.25}, {text("Al"), 2.0 / 3, 1.0 / 3, 0.25}, {text("Si"), 0.3875, 0.1158, 0},
          {text("O"), 0.3100, 0.2366, 0}, {text("O"), 0.4988, 0.1455, 0.1453}}},
        {text("quartz"), text("P 32 2 1"), text("Levien, Prewitt & Weidner (1980), Am. Mineral. 65, 920"),
         {4.9160, 4.9160, 5.4054, 90, 90, 120},
         {text("y,x,-z"), text("-y,x-y,z+2/3")},
         {{text("Si"), 0.4697, 0, 2.0 / 3}, {text("O"), 0.4135, 0.2669, 0.1191 + 2.0 / 3}}},
        {text("calcite"), text("R -3 c"), text("Effenberger, Mereiter & Zemann (1981), Z. Krist. 156, 233"),
         {4.9896, 4.9896, 17.0610, 90, 90, 120},
         {text("-x,-y,-z"), text("-y,x-y,z"), text("y,x,-z+1/2"), text("x+1/3,y+2/3,z+2/3")},
         {{text("Ca"), 0, 0, 0}, {text("C"), 0, 0, 0.25}, {text("O"), 0.25682, 0, 0.25}}},
        {text("akermanite"), text("P -4 21 m"), text("Kimata & Ii (1981), N. Jb. Miner. Mh. 1981, 1"),
         {7.835, 7.835, 5.010, 90, 90, 90},
         {text("-y,x,-z"), text("y+1/2,x+1/2,z")},
         {{text("Ca"), 0.3318, 0.1682, 0.5065}, {text("Mg"), 0, 0, 0}, {text("Si"), 0.1396, 0.3604, 0.9354},
          {text("O"), 0.5, 0, 0.1808}, {text("O"), 0.1405, 0.3595, 0.2528},
          {text("O"), 0.0798, 0.1864, 0.7883}}},
        {text("anatase"), text("I 41/a m d"), text("Howard, Sabine & Dickson (1991), Acta Cryst. B47, 462"),
         {3.7842, 3.7842, 9.5146, 90, 90, 90},
         {text("x,-y,z"), text("y,x,-z"), text("y+1/2,x,z+3/4")},
         {{text("Ti"), 0, 0, 0}, {text("O"), 0, 0, 0.2081}}},
        {text("forsterite"), text("P b n m"),
         text("Fujino, Sasaki, Takeuchi & Sadanaga (1981), Acta Cryst. B37, 513"),
         {4.7534, 10.1902, 5.9783, 90, 90, 90},
         {text("-x,-y,-z"), text("x,y,-z+1/2"), text("-x+1/2,y+1/2,z")},
         {{text("Mg"), 0, 0, 0}, {text("Mg"), 0.9915, 0.2774, 0.25}, {text("Si"), 0.4262, 0.0940, 0.25},
          {text("O"), 0.7657, 0.0913, 0.25}, {text("O"), 0.2215, 0.4474, 0.25},
          {text("O"), 0.2777, 0.1628, 0.0331}}},
        {text("natrolite"), text("F d d 2"), text("Artioli, Smith & Kvick (1984), Acta Cryst. C40, 1658"),
         {18.2929, 18.6407, 6.5871, 90, 90, 90},
         {text("-x,-y,z"), text("-x+1/4,y+1/4,z+1/4")},
         {{text("Na"), 0.22076, 0.03048, 0.61778}, {text("Si"), 0, 0, 0}, {text("Si"), 0.15324, 0.21117, 0.62312},
          {text("Al"), 0.03736, 0.09365, 0.61530}, {text("O"), 0.02254, 0.06861, 0.86589},
          {text("O"), 0.07021, 0.18161, 0.60971}, {text("O"), 0.09844, 0.03502, 0.50043},
          {text("O"), 0.20656, 0.15285, 0.72570}, {text("O"), 0.18049, 0.22735, 0.39011},
          {text("O"), 0.05593, 0.18933, 0.11126}}},
        {text("diopside"), text("C 1 2/c 1"),
         text("Cameron, Sueno, Prewitt & Papike (1973), Am. Mineral. 58, 594"),
         {9.746, 8.899, 5.251, 90, 105.63, 90},
         {text("-x,-y,-z"), text("x,-y,z+1/2"), text("x+1/2,y+1/2,z")},
         {{text("Mg"), 0, 0.9082, 0.25}, {text("Ca"), 0, 0.3015, 0.25}, {text("Si"), 0.2862, 0.0933, 0.2293},
          {text("O"), 0.1156, 0.0873, 0.1422}, {text("O"), 0.3611, 0.2500, 0.3180},
          {text("O"), 0.3505, 0.0176, 0.9953}}},
        {text("kyanite"), text("P -1"), text("Winter & Ghose (1979), Am. Mineral. 64, 573"),
         {7.1262, 7.8520, 5.5724, 89.99, 101.11, 106.03},
         {text("-x,-y,-z")},
         {{text("Al"), 0.32533, 0.70412, 0.45812}, {text("Al"), 0.29740, 0.69882, 0.95043},
          {text("Al"), 0.09983, 0.38616, 0.64043}, {text("Al"), 0.11205, 0.91750, 0.16469},
          {text("Si"), 0.29625, 0.06488, 0.70657}, {text("Si"), 0.29100, 0.33168, 0.18937},
          {text("O"), 0.10929, 0.14681, 0.12865}, {text("O"), 0.12287, 0.68533, 0.18113},
          {text("O"), 0.27507, 0.45443, 0.95472}, {text("O"), 0.28377, 0.93567, 0.93572},
          {text("O"), 0.10836, 0.15216, 0.66671}, {text("O"), 0.12192, 0.63063, 0.63939},
          {text("O"), 0.28226, 0.44512, 0.42868}, {text("O"), 0.29156, 0.94684, 0.46574},
          {text("O"), 0.50074, 0.27519, 0.24405}, {text("O"), 0.50154, 0.23099, 0.75595}}},
    };
    return listStructure;
}

const CrystalStructure* findCrystalStructure(const QString& strName)
{
    for (const CrystalStructure& structure : crystalStructures())
        if (structure.strName == strName)
            return &structure;
    return nullptr;
}
