#pragma once

namespace OV::detail
{

constexpr char32_t kZeroWidthJoiner = 0x200D;

/// The skin tones that colour the symbol before them.
constexpr char32_t kFirstEmojiModifier = 0x1F3FB;
constexpr int kEmojiModifiers = 5;

constexpr bool IsEmojiModifier(char32_t c)
{
    return c >= kFirstEmojiModifier && c < kFirstEmojiModifier + kEmojiModifiers;
}

/// The controls behind ASCII and behind its upper half: neither drawn nor shaped.
constexpr bool IsControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

/// What tells how its neighbours are ordered, joined or chosen, and is never seen itself:
/// Unicode's default ignorables, separators of lines and paragraphs, and annotation marks.
bool IsUnseen(char32_t c);

bool IsSpace(char32_t c);

/// Stands on or about the letter before it.
bool IsMark(char32_t c);

/// Stands for itself: emoji are of this kind, letters and digits are not.
bool IsSymbol(char32_t c);

/// Belongs to the character before it: marks and format characters.
bool BelongsToPrevious(char32_t c);

}  // namespace OV::detail
