#include "orvane/imaging/Image.h"

#include "orvane/imaging/detail/NewImage.h"
#include "orvane/imaging/detail/RowTasks.h"
#include "orvane/imaging/detail/RowTransform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <thread>

namespace OV
{

namespace
{

constexpr int kPixelBytes = 4;
// Below this weight a neighbour leaves no trace in eight bits.
constexpr float kNoBlend = 1e-6f;

// Number of pixels; 0 where a side is below 1.
std::uint64_t PixelCount(int width, int height)
{
    return width < 1 || height < 1 ? 0 : std::uint64_t(width) * std::uint64_t(height);
}

// Never null, not even for no pixels, so that null always means "no block".
unsigned char* AllocatePixels(int width, int height)
{
    constexpr std::uint64_t largest = std::uint64_t(std::numeric_limits<std::ptrdiff_t>::max()) / kPixelBytes;
    const std::uint64_t pixels = PixelCount(width, height);
    void* block = pixels > largest ? nullptr : std::malloc(std::max<std::size_t>(pixels, 1) * kPixelBytes);
    if (!block)
    {
        throw std::bad_alloc();
    }
    return static_cast<unsigned char*>(block);
}

// Drops the fraction. What no int can hold becomes the nearest, "not a number" the lowest.
int ToInt(float value)
{
    constexpr float limit = 2147483648.0f;
    if (!(value > -limit))
    {
        return std::numeric_limits<int>::min();
    }
    return value >= limit ? std::numeric_limits<int>::max() : static_cast<int>(value);
}

// One coordinate of a sample: the pixel before it, and the weights of that one and the next.
struct SampleAxis
{
    SampleAxis(float position, int size)
    {
        index = ToInt(position);
        nextWeight = position - static_cast<float>(index);
        weight = 1.0f - nextWeight;
        // Below 1, not below 0: the first two columns are not blended with each other.
        if (index < 1 || index >= size - 1)
        {
            nextWeight = 0.0f;
            weight = 1.0f;
        }
        index = std::min(std::max(index, 0), size - 1);
    }

    int index;
    float weight;
    float nextWeight;
};

// Step in source pixels from one pixel of the scaled picture to the next, so that corners
// meet corners. A scaled size of 1 divides by zero, which is meant.
float SourceStep(int sourceSize, int scaledSize)
{
    return static_cast<float>(std::int64_t(sourceSize) - 1) / static_cast<float>(std::int64_t(scaledSize) - 1);
}

float SourcePosition(int index, int cropStart, float step)
{
    return static_cast<float>(std::int64_t(index) + cropStart) * step;
}

}  // namespace

namespace detail
{

struct SharedPixels
{
    SharedPixels() = default;
    SharedPixels(const SharedPixels&) = delete;
    SharedPixels& operator=(const SharedPixels&) = delete;
    ~SharedPixels() { std::free(block); }

    unsigned char* block = nullptr;
};

std::unique_ptr<Image> NewImage(int width, int height)
{
    std::unique_ptr<Image> image(new Image);
    image->data = AllocatePixels(width, height);
    image->width = std::max(width, 0);
    image->height = std::max(height, 0);
    return image;
}

}  // namespace detail

Image::Image() = default;

Image::Image(const Image& other)
    : data(other.data)
    , width(other.width)
    , height(other.height)
    , m_shared(other.Share())
{
}

Image& Image::operator=(const Image& other)
{
    // The other's values are taken first: it may be this image.
    const std::shared_ptr<detail::SharedPixels> shared = other.Share();
    unsigned char* const block = other.data;
    const int newWidth = other.width;
    const int newHeight = other.height;
    Release();
    m_shared = shared;
    data = block;
    width = newWidth;
    height = newHeight;
    return *this;
}

Image::~Image()
{
    Release();
}

const std::shared_ptr<detail::SharedPixels>& Image::Share() const
{
    if (!m_shared || m_shared->block != data)
    {
        auto shared = std::make_shared<detail::SharedPixels>();
        shared->block = data;
        m_shared = std::move(shared);
    }
    return m_shared;
}

void Image::Release()
{
    if (!m_shared || m_shared->block != data)
    {
        std::free(data);
    }
    data = nullptr;
    m_shared.reset();
}

Image* Image::ImageFromData(int width, int height, unsigned char* source, bool swapRedBlue, bool sourceIsRGB,
                            bool flipVertical)
{
    std::unique_ptr<Image> image = detail::NewImage(width, height);
    unsigned char* const destination = image->data;
    const std::size_t columns = static_cast<std::size_t>(image->width);
    const std::size_t rows = static_cast<std::size_t>(image->height);
    const detail::RowTransform transform = detail::ChooseRowTransform(swapRedBlue, sourceIsRGB, flipVertical);
    const std::size_t hardwareThreads = std::thread::hardware_concurrency();
    const detail::RowTasks tasks = detail::PlanRowTasks(columns, rows, hardwareThreads);
    if (tasks.count == 1)
    {
        transform(source, destination, columns, rows);
        return image.release();
    }
    const std::size_t pixelsPerTask = columns * tasks.rowsPerTask;
    const std::size_t sourceStep = pixelsPerTask * detail::SourceBytes(sourceIsRGB);
    const std::size_t destinationStep = pixelsPerTask * kPixelBytes;
    detail::RunTasks(tasks.count, hardwareThreads, [&](std::size_t task) {
        const std::size_t place = flipVertical ? tasks.count - 1 - task : task;
        transform(source + task * sourceStep, destination + place * destinationStep, columns, tasks.Rows(task));
    });
    return image.release();
}

Image* Image::ImageFromTextData(int width, int height, unsigned char* source)
{
    std::unique_ptr<Image> image = detail::NewImage(width, height);
    const std::size_t rowBytes = static_cast<std::size_t>(image->width) * kPixelBytes;
    unsigned char* out = image->data;
    for (std::size_t row = static_cast<std::size_t>(image->height); row-- > 0;)
    {
        const unsigned char* in = source + row * rowBytes;
        for (int x = 0; x < image->width; ++x, in += kPixelBytes, out += kPixelBytes)
        {
            const auto coverage = static_cast<unsigned char>((in[0] + in[1] + in[2]) / 3);
            std::fill_n(out, kPixelBytes, coverage);
        }
    }
    return image.release();
}

unsigned char* Image::GetData(int& dataWidth, int& dataHeight)
{
    GetDimensions(dataWidth, dataHeight);
    return data;
}

void Image::GetDimensions(int& dataWidth, int& dataHeight)
{
    dataWidth = width;
    dataHeight = height;
}

void Image::PremultiplyAlpha()
{
    if (!data)
    {
        return;
    }
    unsigned char* pixel = data;
    for (std::uint64_t count = PixelCount(width, height); count > 0; --count, pixel += kPixelBytes)
    {
        const float alpha = static_cast<float>(pixel[3]) * 0.003921569f;
        if (static_cast<double>(alpha) < 0.999999)
        {
            for (int c = 0; c < 3; ++c)
            {
                pixel[c] = static_cast<unsigned char>(static_cast<float>(pixel[c]) * alpha);
            }
        }
    }
}

void Image::Resize(int newWidth, int newHeight)
{
    unsigned char* const pixels = ResizeCropAndReturnData(newWidth, newHeight, 0, 0, newWidth, newHeight);
    Release();
    data = pixels;
    width = std::max(newWidth, 0);
    height = std::max(newHeight, 0);
}

unsigned char* Image::ResizeCropAndReturnData(int fullWidth, int fullHeight, int cropX, int cropY, int cropWidth,
                                              int cropHeight)
{
    unsigned char* const out = AllocatePixels(cropWidth, cropHeight);
    const int columns = std::min(cropWidth, fullWidth);
    const int rows = std::min(cropHeight, fullHeight);
    if (columns < cropWidth || rows < cropHeight || !data || PixelCount(width, height) == 0)
    {
        std::fill_n(out, PixelCount(cropWidth, cropHeight) * kPixelBytes, static_cast<unsigned char>(0));
    }
    if (!data || PixelCount(width, height) == 0)
    {
        return out;
    }
    const float xStep = SourceStep(width, fullWidth);
    const float yStep = SourceStep(height, fullHeight);
    for (int y = 0; y < rows; ++y)
    {
        unsigned char* pixel = out + std::size_t(y) * std::size_t(cropWidth) * kPixelBytes;
        for (int x = 0; x < columns; ++x, pixel += kPixelBytes)
        {
            SampleBilinear(SourcePosition(x, cropX, xStep), SourcePosition(y, cropY, yStep), pixel, data, width,
                           height, width * kPixelBytes, kPixelBytes);
        }
    }
    return out;
}

void Image::SampleBilinear(float x, float y, unsigned char* destination, unsigned char* source, int width, int height,
                           int stride, int bytesPerPixel)
{
    const SampleAxis column(x, width);
    const SampleAxis row(y, height);
    const float ux = column.weight;
    const float tx = column.nextWeight;
    const float uy = row.weight;
    const float ty = row.nextWeight;
    const unsigned char* p =
        source + std::ptrdiff_t(row.index) * stride + std::ptrdiff_t(column.index) * bytesPerPixel;
    for (int c = 0; c < bytesPerPixel; ++c, ++p)
    {
        // The neighbours are read only where they count: past an edge there are none.
        float value;
        if (tx <= kNoBlend && ty <= kNoBlend)
        {
            value = p[0];
        }
        else if (tx <= kNoBlend)
        {
            value = p[0] * uy + p[stride] * ty;
        }
        else if (ty <= kNoBlend)
        {
            value = p[0] * ux + p[bytesPerPixel] * tx;
        }
        else
        {
            value = p[0] * ux * uy + p[bytesPerPixel] * tx * uy + p[stride] * ux * ty +
                    p[stride + bytesPerPixel] * tx * ty;
        }
        destination[c] = static_cast<unsigned char>(static_cast<int>(value));
    }
}

}  // namespace OV
