// A picture of the card: the header is read first, and what is shown fits into its box.
#include "film/picturefile.h"
#include "fuzz.h"

FUZZ(input)
{
    static const FuzzUnit unit({QString()});
    FuzzUnit::put(u"/picture.jpg"_unit, input);
    const HostPath picture = unit::path(u"/picture.jpg"_unit);
    const QSize size = readPicture(picture, {144, 120}).size();
    require(size.width() <= 144 && size.height() <= 120);
    require(readSmallPicture(picture, 128).width() <= 128);
}
