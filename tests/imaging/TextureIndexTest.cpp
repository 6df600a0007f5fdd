#include "orvane/imaging/TextureIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace OV::Test
{

namespace
{

TextureIndex File(const std::wstring& path, const std::string& name, bool flag = false)
{
    return TextureIndex(FilePath{path}, name, flag);
}

TextureIndex Text(const std::string& font, int size, const std::string& text, int maxWidth)
{
    return TextureIndex(font, size, text, maxWidth);
}

bool AreSame(const TextureIndex& a, const TextureIndex& b)
{
    return !(a < b) && !(b < a);
}

TEST(TextureIndex, AFileKeyHasNoText)
{
    const TextureIndex key = File(L"dir/", "picture.png", true);
    EXPECT_TRUE(key.isFile);
    EXPECT_EQ(key.filePath.path, L"dir/");
    EXPECT_EQ(key.fileName, "picture.png");
    EXPECT_TRUE(key.flag);
    EXPECT_EQ(key.fontName, "");
    EXPECT_EQ(key.fontSize, 0);
    EXPECT_EQ(key.text, "");
    EXPECT_EQ(key.maxWidth, 0);
}

TEST(TextureIndex, ATextKeyHasNoFile)
{
    const TextureIndex key = Text("Sans", 12, "Hello", 80);
    EXPECT_FALSE(key.isFile);
    EXPECT_EQ(key.filePath.path, L"");
    EXPECT_EQ(key.fileName, "");
    EXPECT_FALSE(key.flag);
    EXPECT_EQ(key.fontName, "Sans");
    EXPECT_EQ(key.fontSize, 12);
    EXPECT_EQ(key.text, "Hello");
    EXPECT_EQ(key.maxWidth, 80);
}

// In ascending order, no two alike.
std::vector<TextureIndex> AscendingKeys()
{
    return {
        Text("", 0, "", 0),
        Text("A", 1, "", 0),
        Text("A", 10, "a", 0),
        Text("A", 10, "a", 5),
        Text("A", 10, "aa", -1),
        Text("A", 11, "a", 0),
        Text("AB", -1, "", 0),
        Text("B", 1, "", 0),
        Text("\xC3\xA4", 1, "", 0),  // bytes count as unsigned: after all of ASCII
        File(L"", ""),
        File(L"", "", true),
        File(L"", "a"),
        File(L"a", ""),
        File(L"a", "b"),
        File(L"a", "b", true),
        File(L"a", "ba"),
        File(L"aa", ""),
        File(L"b", "a"),
        File(L"\xD7FF", ""),
        File(L"\x10000", ""),  // two units of 16 bits, the first a surrogate
        File(L"\x10FFFF", ""),
        File(L"\xE000", ""),
        File(L"\xFFFF", ""),
    };
}

TEST(TextureIndex, OrdersTextBeforeFilesAndThenFieldByField)
{
    const std::vector<TextureIndex> keys = AscendingKeys();
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        for (std::size_t j = 0; j < keys.size(); ++j)
        {
            EXPECT_EQ(keys[i] < keys[j], i < j) << i << " and " << j;
        }
    }
}

TEST(TextureIndex, ATextKeyNeverEqualsAFileKey)
{
    EXPECT_FALSE(AreSame(Text("", 0, "", 0), File(L"", "")));
    EXPECT_TRUE(Text("z", 9, "z", 9) < File(L"", ""));
    EXPECT_FALSE(File(L"", "") < Text("z", 9, "z", 9));
}

TEST(TextureIndex, CopiesAndMovesAreTheSameKey)
{
    TextureIndex key = File(L"dir/", "name", true);
    const TextureIndex copy = key;
    EXPECT_TRUE(AreSame(copy, key));
    const TextureIndex moved = std::move(key);
    EXPECT_TRUE(AreSame(copy, moved));
}

TEST(TextureIndex, SortsAnyMixture)
{
    const std::vector<TextureIndex> ascending = AscendingKeys();
    std::vector<TextureIndex> keys = ascending;
    std::mt19937 random(7);
    std::shuffle(keys.begin(), keys.end(), random);
    std::sort(keys.begin(), keys.end());
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        EXPECT_TRUE(AreSame(keys[i], ascending[i])) << i;
    }
}

}  // namespace

}  // namespace OV::Test
