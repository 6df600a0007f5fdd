#pragma once

/// Marks what the shared library offers to hosts; everything else stays hidden.
#define ORVANE_API __attribute__((visibility("default")))
