#pragma once

#include "orvane/Export.h"

namespace OV
{

class EffectES20;

/// Keeps an effect alive for the length of a scope, also when its cache dies within.
class ORVANE_API EffectReferencePlaceholder
{
public:
    /// Takes a reference. Null is allowed.
    explicit EffectReferencePlaceholder(EffectES20* effect);
    EffectReferencePlaceholder(const EffectReferencePlaceholder&) = delete;
    EffectReferencePlaceholder& operator=(const EffectReferencePlaceholder&) = delete;

    /// Gives the reference back and destroys the effect if it was the last.
    ~EffectReferencePlaceholder();

private:
    EffectES20* m_effect;
};

} // namespace OV
