#pragma once

/// Gives an `enum X : unsigned` the operators of a set of bits. Used in the namespace of X.
#define ORVANE_BIT_SET(X)                                                                          \
    constexpr X operator|(X a, X b)                                                                \
    {                                                                                              \
        return static_cast<X>(static_cast<unsigned>(a) | static_cast<unsigned>(b));                \
    }                                                                                              \
    constexpr X operator&(X a, X b)                                                                \
    {                                                                                              \
        return static_cast<X>(static_cast<unsigned>(a) & static_cast<unsigned>(b));                \
    }                                                                                              \
    constexpr X operator~(X a)                                                                     \
    {                                                                                              \
        return static_cast<X>(~static_cast<unsigned>(a));                                          \
    }                                                                                              \
    inline X& operator|=(X& a, X b)                                                                \
    {                                                                                              \
        return a = a | b;                                                                          \
    }                                                                                              \
    inline X& operator&=(X& a, X b)                                                                \
    {                                                                                              \
        return a = a & b;                                                                          \
    }
