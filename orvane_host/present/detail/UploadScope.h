#pragma once

namespace OV::Host::Detail
{

/// Lets GL take pixels from memory in rows without padding for the length of a scope, whatever
/// layout and pixel buffer a host has set, and puts those back. GL.
class UploadScope
{
public:
    UploadScope();
    ~UploadScope();

    UploadScope(const UploadScope&) = delete;
    UploadScope& operator=(const UploadScope&) = delete;

private:
    static constexpr int kSettings = 4;

    int m_values[kSettings] = {};
    int m_buffer = 0;
};

} // namespace OV::Host::Detail
