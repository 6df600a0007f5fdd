#include "tests/imaging/FailurePoints.h"

#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <png.h>
#include <pthread.h>

namespace OV::Test
{

FailurePoints& Failures()
{
    static FailurePoints points;
    return points;
}

FailureScope::FailureScope()
{
    Failures() = {};
}

FailureScope::~FailureScope()
{
    Failures() = {};
}

namespace
{

// The function that would be called if this program had none of that name.
template <typename Function>
Function* Real(Function*, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

}  // namespace OV::Test

using OV::Test::Failures;
using OV::Test::Real;

#define ORVANE_TEST_STAND_IN __attribute__((visibility("default")))

extern "C"
{

ORVANE_TEST_STAND_IN png_structp png_create_read_struct(png_const_charp version, png_voidp context,
                                                        png_error_ptr error, png_error_ptr warning)
{
    static auto* const real = Real(&png_create_read_struct, "png_create_read_struct");
    png_structp png = Failures().readStruct ? nullptr : real(version, context, error, warning);
    Failures().livePngStructs += png ? 1 : 0;
    return png;
}

ORVANE_TEST_STAND_IN png_structp png_create_write_struct(png_const_charp version, png_voidp context,
                                                         png_error_ptr error, png_error_ptr warning)
{
    static auto* const real = Real(&png_create_write_struct, "png_create_write_struct");
    png_structp png = Failures().writeStruct ? nullptr : real(version, context, error, warning);
    Failures().livePngStructs += png ? 1 : 0;
    return png;
}

ORVANE_TEST_STAND_IN void png_destroy_read_struct(png_structpp png, png_infopp info, png_infopp end)
{
    static auto* const real = Real(&png_destroy_read_struct, "png_destroy_read_struct");
    Failures().livePngStructs -= png && *png ? 1 : 0;
    real(png, info, end);
}

ORVANE_TEST_STAND_IN void png_destroy_write_struct(png_structpp png, png_infopp info)
{
    static auto* const real = Real(&png_destroy_write_struct, "png_destroy_write_struct");
    Failures().livePngStructs -= png && *png ? 1 : 0;
    real(png, info);
}

ORVANE_TEST_STAND_IN png_infop png_create_info_struct(png_const_structrp png)
{
    static auto* const real = Real(&png_create_info_struct, "png_create_info_struct");
    if (Failures().infoStructsToPass == 0)
    {
        return nullptr;
    }
    Failures().infoStructsToPass -= Failures().infoStructsToPass > 0 ? 1 : 0;
    return real(png);
}

ORVANE_TEST_STAND_IN png_voidp png_malloc(png_const_structrp png, png_alloc_size_t size)
{
    static auto* const real = Real(&png_malloc, "png_malloc");
    return Failures().pngMalloc ? nullptr : real(png, size);
}

ORVANE_TEST_STAND_IN int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                                        void* argument) noexcept
{
    static auto* const real = Real(&pthread_create, "pthread_create");
    ++Failures().threadsAsked;
    return Failures().threads ? EAGAIN : real(thread, attributes, start, argument);
}

}  // extern "C"

ORVANE_TEST_STAND_IN void* operator new(std::size_t size)
{
    const std::size_t failing = Failures().failingBlock;
    void* block = failing != 0 && size >= failing ? nullptr : std::malloc(size ? size : 1);
    if (!block)
    {
        throw std::bad_alloc();
    }
    return block;
}

ORVANE_TEST_STAND_IN void* operator new[](std::size_t size)
{
    return operator new(size);
}

ORVANE_TEST_STAND_IN void operator delete(void* block) noexcept
{
    std::free(block);
}

ORVANE_TEST_STAND_IN void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

ORVANE_TEST_STAND_IN void operator delete[](void* block) noexcept
{
    std::free(block);
}

ORVANE_TEST_STAND_IN void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}
