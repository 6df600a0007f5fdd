#include "orvane/imaging/detail/PngSupport.h"

namespace OV::detail
{

void PngFail(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void PngIgnoreWarning(png_structp, png_const_charp)
{
}

}  // namespace OV::detail
