// Reading fields of point records in place, and the two patches the codec allows: class bits
// and the creation year.
#include "LasLayout.h"

namespace vx::las {

using detail::load;

int32_t LasFile::rawX(std::size_t i) const
{
    return load<int32_t>(record(i));
}
int32_t LasFile::rawY(std::size_t i) const
{
    return load<int32_t>(record(i) + 4);
}
int32_t LasFile::rawZ(std::size_t i) const
{
    return load<int32_t>(record(i) + 8);
}

double LasFile::x(std::size_t i) const
{
    return rawX(i) * header_.scale[0] + header_.offset[0];
}
double LasFile::y(std::size_t i) const
{
    return rawY(i) * header_.scale[1] + header_.offset[1];
}
double LasFile::z(std::size_t i) const
{
    return rawZ(i) * header_.scale[2] + header_.offset[2];
}

uint16_t LasFile::intensity(std::size_t i) const
{
    return load<uint16_t>(record(i) + 12);
}

int LasFile::returnNumber(std::size_t i) const
{
    const uint8_t bits = record(i)[14];
    return wideFormat_ ? bits & 0x0F : bits & 0x07;
}

int LasFile::numberOfReturns(std::size_t i) const
{
    const uint8_t bits = record(i)[14];
    return wideFormat_ ? bits >> 4 : (bits >> 3) & 0x07;
}

int LasFile::classification(std::size_t i) const
{
    return wideFormat_ ? record(i)[16] : record(i)[15] & 0x1F;
}

double LasFile::gpsTime(std::size_t i) const
{
    const std::size_t at = detail::gpsTimeOffset(header_.pointFormat);
    return at ? load<double>(record(i) + at) : 0.0;
}

void LasFile::checkClassFits(int cls) const
{
    const int top = wideFormat_ ? 255 : 31;
    if (cls < 0 || cls > top)
        detail::fail(name_, "class " + std::to_string(cls) +
                                " does not fit the classification field of point format " +
                                std::to_string(header_.pointFormat));
}

void LasFile::setClassification(std::size_t i, int cls)
{
    if (i >= count_)
        detail::fail(name_, "point " + std::to_string(i) + " does not exist (the file holds " +
                                std::to_string(count_) + " points)");
    checkClassFits(cls);
    uint8_t* r = record(i);
    if (wideFormat_) {
        r[16] = static_cast<uint8_t>(cls);
    } else {
        // The upper three bits are the synthetic, key-point and withheld flags: keep them.
        r[15] = static_cast<uint8_t>((r[15] & 0xE0) | cls);
    }
}

void LasFile::setCreationYear(uint16_t year)
{
    header_.creationYear = year;
    detail::store(bytes_.data() + detail::kCreationYear, year);
}

} // namespace vx::las
