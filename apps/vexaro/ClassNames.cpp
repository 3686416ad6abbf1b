#include "ClassNames.h"

namespace vx::app {

std::string className(int cls, bool legacy)
{
    // Point formats 0 to 5 keep the class in five bits with the older table.
    if (legacy) {
        switch (cls) {
        case 8:
            return "Model key-point";
        case 12:
            return "Overlap";
        default:
            if (cls >= 10)
                return "Reserved";
        }
    }
    switch (cls) {
    case 0:
        return "Created, never classified";
    case 1:
        return "Unclassified";
    case 2:
        return "Ground";
    case 3:
        return "Low vegetation";
    case 4:
        return "Medium vegetation";
    case 5:
        return "High vegetation";
    case 6:
        return "Building";
    case 7:
        return "Low point (noise)";
    case 9:
        return "Water";
    case 10:
        return "Rail";
    case 11:
        return "Road surface";
    case 13:
        return "Wire - guard";
    case 14:
        return "Wire - conductor";
    case 15:
        return "Transmission tower";
    case 16:
        return "Wire-structure connector";
    case 17:
        return "Bridge deck";
    case 18:
        return "High noise";
    case 19:
        return "Overhead structure";
    case 20:
        return "Ignored ground";
    case 21:
        return "Snow";
    case 22:
        return "Temporal exclusion";
    default:
        return cls >= 64 && cls <= 255 ? "User defined" : "Reserved";
    }
}

Rgb classColour(int cls)
{
    switch (cls) {
    case 0:
        return {0xBA, 0xBA, 0xBA};
    case 1:
        return {0xAA, 0xAA, 0xAA};
    case 2:
        return {0xAA, 0x55, 0x00};
    case 3:
        return {0x00, 0xAA, 0xAA};
    case 4:
        return {0x55, 0xFF, 0x55};
    case 5:
        return {0x00, 0xAA, 0x00};
    case 6:
        return {0xFF, 0x55, 0x55};
    case 7:
        return {0xAA, 0x00, 0x00};
    case 9:
        return {0x55, 0xFF, 0xFF};
    case 17:
        return {0x55, 0x55, 0xFF};
    case 18:
        return {0x64, 0x64, 0x64};
    default:
        return {0x80, 0x80, 0x80};
    }
}

} // namespace vx::app
