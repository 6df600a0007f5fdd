#include "orvane/math/Base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

using OV::Base64;

namespace
{

const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint64_t failure = 0xFFFFFFFFFFFFFFFF;

/// Reaches the protected operation, as a derived class does.
class Decoder : public Base64
{
public:
    using Base64::_decode;
};

std::vector<char> Bytes(const std::string& text)
{
    return std::vector<char>(text.begin(), text.end());
}

std::string Text(const std::vector<char>& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

std::string Encoded(const std::vector<char>& bytes)
{
    std::vector<char> out = Bytes("old contents that are longer than the result");
    Base64::Encode(bytes, out);
    return Text(out);
}

/// Whether both forms take the text, and agree.
bool Decodes(const std::string& text, std::vector<char>* bytes = nullptr)
{
    std::vector<char> fromString;
    std::vector<char> fromVector;
    const bool isGood = Base64::Decode(text, fromString);
    EXPECT_EQ(isGood, Base64::Decode(Bytes(text), fromVector));
    EXPECT_EQ(fromString, fromVector);
    if (bytes != nullptr)
    {
        *bytes = fromString;
    }
    return isGood;
}

/// Bit by bit, with no tables.
std::string ReferenceEncode(const std::vector<char>& bytes)
{
    std::vector<bool> bits;
    for (const char byte : bytes)
    {
        for (int i = 7; i >= 0; --i)
        {
            bits.push_back((static_cast<unsigned char>(byte) >> i & 1) != 0);
        }
    }
    while (bits.size() % 6 != 0)
    {
        bits.push_back(false);
    }
    std::string text;
    for (std::size_t i = 0; i < bits.size(); i += 6)
    {
        std::size_t value = 0;
        for (std::size_t k = 0; k < 6; ++k)
        {
            value = value * 2 + (bits[i + k] ? 1 : 0);
        }
        text += alphabet[value];
    }
    while (text.size() % 4 != 0)
    {
        text += '=';
    }
    return text;
}

std::vector<char> RandomBytes(std::mt19937& random, std::size_t count)
{
    std::vector<char> bytes(count);
    for (char& byte : bytes)
    {
        byte = static_cast<char>(random() & 0xFF);
    }
    return bytes;
}

struct KnownPair
{
    const char* plain;
    const char* encoded;
};

constexpr KnownPair knownPairs[] = {{"f", "Zg=="},          {"fo", "Zm8="},
                                    {"foo", "Zm9v"},        {"foob", "Zm9vYg=="},
                                    {"fooba", "Zm9vYmE="},  {"foobar", "Zm9vYmFy"},
                                    {"\xFB\xEF\xBE", "++++"}, {"\xFF\xFF\xFF", "////"},
                                    {"A", "QQ=="}};

} // namespace

TEST(Base64, HasNoInstances)
{
    EXPECT_FALSE(std::is_default_constructible_v<Base64>);
}

TEST(Base64, KnownTextsBothWays)
{
    for (const KnownPair& pair : knownPairs)
    {
        SCOPED_TRACE(pair.encoded);
        EXPECT_EQ(Encoded(Bytes(pair.plain)), pair.encoded);
        std::vector<char> decoded;
        EXPECT_TRUE(Decodes(pair.encoded, &decoded));
        EXPECT_EQ(Text(decoded), pair.plain);
    }
}

TEST(Base64, EncodeOfNothingIsEmpty)
{
    std::vector<char> out = Bytes("old");
    Base64::Encode(std::vector<char>(), out);
    EXPECT_TRUE(out.empty());

    char text[2] = {'x', 'y'};
    Base64::Encode(nullptr, 0, text);
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'y');
}

TEST(Base64, EncodePadsOneTwoAndThreeBytes)
{
    EXPECT_EQ(Encoded(Bytes("A")), "QQ==");
    EXPECT_EQ(Encoded(Bytes("AA")), "QUE=");
    EXPECT_EQ(Encoded(Bytes("AAA")), "QUFB");
}

TEST(Base64, EncodeAgreesWithTheReferenceAtEveryLength)
{
    std::mt19937 random(1);
    for (std::size_t length = 0; length < 100; ++length)
    {
        const std::vector<char> bytes = RandomBytes(random, length);
        const std::string text = Encoded(bytes);
        EXPECT_EQ(text, ReferenceEncode(bytes));
        EXPECT_EQ(text.size(), 4 * ((length + 2) / 3));
    }
}

TEST(Base64, PointerFormWritesTheSameAndATerminator)
{
    std::mt19937 random(2);
    for (unsigned int length = 0; length < 50; ++length)
    {
        const std::vector<char> bytes = RandomBytes(random, length);
        const std::size_t room = 4 * ((length + 2) / 3) + 1;
        std::vector<char> out(room + 3, 'x');
        Base64::Encode(reinterpret_cast<const unsigned char*>(bytes.data()), length, out.data());
        EXPECT_EQ(std::string(out.data()), ReferenceEncode(bytes));
        EXPECT_EQ(out[room - 1], '\0');
        EXPECT_EQ(std::string(out.begin() + static_cast<std::ptrdiff_t>(room), out.end()), "xxx");
    }
}

TEST(Base64, EncodeMayOverwriteItsInput)
{
    std::vector<char> bytes = Bytes("foobar");
    Base64::Encode(bytes, bytes);
    EXPECT_EQ(Text(bytes), "Zm9vYmFy");
    EXPECT_TRUE(Base64::Decode(bytes, bytes));
    EXPECT_EQ(Text(bytes), "foobar");
}

TEST(Base64, EveryByteSurvivesInEveryPlace)
{
    for (std::size_t place = 0; place < 3; ++place)
    {
        for (int value = 0; value < 256; ++value)
        {
            std::vector<char> bytes(3, '\x5A');
            bytes[place] = static_cast<char>(value);
            std::vector<char> back;
            EXPECT_TRUE(Decodes(Encoded(bytes), &back));
            EXPECT_EQ(back, bytes);
        }
    }
}

TEST(Base64, DecodeInvertsEncodeAtEveryLength)
{
    std::mt19937 random(3);
    for (std::size_t length = 1; length < 200; ++length)
    {
        const std::vector<char> bytes = RandomBytes(random, length);
        std::vector<char> back;
        EXPECT_TRUE(Decodes(Encoded(bytes), &back));
        EXPECT_EQ(back, bytes);
    }
}

TEST(Base64, DecodeReplacesWhatWasThere)
{
    std::vector<char> out = Bytes("something longer");
    EXPECT_TRUE(Base64::Decode(std::string("QQ=="), out));
    EXPECT_EQ(Text(out), "A");
}

TEST(Base64, DecodeOfNothingFails)
{
    EXPECT_FALSE(Decodes(""));
}

TEST(Base64, DecodeFailsUnlessTheLengthIsAMultipleOfFour)
{
    EXPECT_TRUE(Decodes("QUFB"));
    for (const char* text : {"Q", "QQ", "QQ=", "QUF", "QUFBQ", "QUFBQQ", "QUFBQUE", "QUFBQQ="})
    {
        EXPECT_FALSE(Decodes(text)) << text;
    }
}

TEST(Base64, DecodeFailsOnEveryInvalidCharacterInEveryPlace)
{
    for (const std::string& valid : {std::string("QUFB"), std::string("QUFBQUFBQUFB"),
                                     std::string("QUFBQUFBQUE="), std::string("QUFBQUFBQQ==")})
    {
        ASSERT_TRUE(Decodes(valid));
        const std::size_t characters = valid.find('=') == std::string::npos ? valid.size() : valid.find('=');
        for (std::size_t place = 0; place < characters; ++place)
        {
            for (int value = 0; value < 256; ++value)
            {
                std::string text = valid;
                text[place] = static_cast<char>(value);
                // A padding character right before the padding or the end is looked at below.
                if (value == '=' && place + 2 >= valid.size())
                {
                    continue;
                }
                const bool isValid = value != 0 && alphabet.find(static_cast<char>(value)) != std::string::npos;
                EXPECT_EQ(Decodes(text), isValid) << valid << " place " << place << " value " << value;
            }
        }
    }
}

TEST(Base64, DecodeFailsOnBlanksLineBreaksAndTheUrlSafeAlphabet)
{
    for (const char* text : {"Q Q=", " QQ=", "QUF\n", "QU\r\n", "QUFB\n\n\n\n", "QU-B", "QU_B", "    "})
    {
        EXPECT_FALSE(Decodes(text)) << text;
    }
}

TEST(Base64, PaddingStandsInTheLastTwoPlacesOnly)
{
    std::vector<char> bytes;
    EXPECT_TRUE(Decodes("QUE=", &bytes));
    EXPECT_EQ(Text(bytes), "AA");
    EXPECT_TRUE(Decodes("QQ==", &bytes));
    EXPECT_EQ(Text(bytes), "A");
    for (const char* text : {"====", "Q===", "=QQQ", "Q=QQ", "QQ=Q", "QQ==QQ==", "QUE=QUFB", "A=B=", "=="})
    {
        EXPECT_FALSE(Decodes(text)) << text;
    }
}

TEST(Base64, BitsLeftOverInAPaddedGroupAreIgnored)
{
    for (const char last : std::string("QRSTUVWXYZabcdef"))
    {
        std::vector<char> bytes;
        EXPECT_TRUE(Decodes(std::string("Q") + last + "==", &bytes)) << last;
        EXPECT_EQ(Text(bytes), "A") << last;
    }
    for (const char last : std::string("EFGH"))
    {
        std::vector<char> bytes;
        EXPECT_TRUE(Decodes(std::string("QU") + last + "=", &bytes)) << last;
        EXPECT_EQ(Text(bytes), "AA") << last;
    }
}

TEST(Base64, DecodeLeavesItsResultAloneWhenItFails)
{
    for (const char* text : {"", "QQ=", "Q Q=", "====", "QUFBQUFB!UFB", "QUFB!Q=="})
    {
        std::vector<char> out = Bytes("kept");
        EXPECT_FALSE(Base64::Decode(std::string(text), out));
        EXPECT_EQ(Text(out), "kept") << text;
        EXPECT_FALSE(Base64::Decode(Bytes(text), out));
        EXPECT_EQ(Text(out), "kept") << text;
    }
}

TEST(Base64, InnerDecodeRefusesNullAndWrongLengths)
{
    char dest[16] = {};
    EXPECT_EQ(Decoder::_decode(nullptr, "QUFB", 4), failure);
    EXPECT_EQ(Decoder::_decode(dest, nullptr, 4), failure);
    for (const std::uint64_t length : {0u, 1u, 2u, 3u, 5u, 6u, 7u})
    {
        EXPECT_EQ(Decoder::_decode(dest, "QUFBQUFB", length), failure) << length;
    }
    EXPECT_EQ(Decoder::_decode(dest, "QUFBQUFB", 4), 3u);
    EXPECT_EQ(Decoder::_decode(dest, "QUFBQUFB", 8), 6u);
    EXPECT_EQ(Decoder::_decode(dest, "QUF!", 4), failure);
}

TEST(Base64, InnerDecodeWritesNoMoreThanItReports)
{
    std::mt19937 random(4);
    for (std::size_t length = 1; length < 40; ++length)
    {
        const std::vector<char> bytes = RandomBytes(random, length);
        const std::string text = ReferenceEncode(bytes);
        // Exactly the room that counts: the sanitizer sees a store past it.
        const std::unique_ptr<char[]> exact(new char[length]);
        EXPECT_EQ(Decoder::_decode(exact.get(), text.data(), text.size()), length);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), exact.get()));

        std::vector<char> guarded(length + 8, '\x77');
        EXPECT_EQ(Decoder::_decode(guarded.data(), text.data(), text.size()), length);
        EXPECT_EQ(std::count(guarded.begin() + static_cast<std::ptrdiff_t>(length), guarded.end(), '\x77'), 8);
    }
}

TEST(Base64, DecodeReadsNothingBehindItsInput)
{
    // The terminator of a string is no part of the vector form.
    std::vector<char> exact = Bytes("QUFBQQ==");
    exact.shrink_to_fit();
    std::vector<char> out;
    EXPECT_TRUE(Base64::Decode(exact, out));
    EXPECT_EQ(Text(out), "AAAA");
}

TEST(Base64, DecodeOfArbitraryBytesAgreesWithARoundTrip)
{
    std::mt19937 random(5);
    const std::string characters = alphabet + "==  -_\n";
    int accepted = 0;
    for (int i = 0; i < 20000; ++i)
    {
        std::string text(random() % 13, 'A');
        for (char& c : text)
        {
            c = random() % 8 == 0 ? characters[random() % characters.size()] : alphabet[random() % 64];
        }
        std::vector<char> bytes;
        if (Decodes(text, &bytes))
        {
            ++accepted;
            // Encoding gives the text back but for the bits that padding leaves over.
            const std::string again = Encoded(bytes);
            ASSERT_EQ(again.size(), text.size());
            const std::size_t whole = bytes.size() / 3 * 4;
            EXPECT_EQ(again.substr(0, whole), text.substr(0, whole));
            EXPECT_EQ(std::count(again.begin(), again.end(), '='), std::count(text.begin(), text.end(), '='));
        }
        else
        {
            const std::size_t end = text.find_last_not_of('=') + 1;
            const bool isWellFormed = !text.empty() && text.size() % 4 == 0 && text.size() - end <= 2 &&
                                      text.find_first_not_of(alphabet) >= end;
            EXPECT_FALSE(isWellFormed) << text;
        }
    }
    EXPECT_GT(accepted, 1000);
}
