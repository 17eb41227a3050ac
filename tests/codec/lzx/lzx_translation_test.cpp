#include "codec/lzx/lzx_translation.h"

#include "support/numbers.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

/// The translation as it is defined, byte by byte.
void translate_plainly(std::string& frame, std::uint32_t translation_size, std::uint32_t& position) {
    const std::size_t length = frame.size();
    if (length <= 6) {
        position += static_cast<std::uint32_t>(length);
        return;
    }
    const std::string last = frame.substr(length - 6);
    frame.replace(length - 6, 6, 6, '\xE8');
    const std::uint32_t end = position + static_cast<std::uint32_t>(length) - 6;
    for (std::size_t i = 0;;) {
        for (; frame[i] != '\xE8'; ++i)
            ++position;
        if (position >= end || i >= length - 6)
            break;
        std::uint32_t value;
        std::memcpy(&value, frame.data() + i + 1, 4);
        if (value < translation_size)
            value -= position;
        else if (0 - value < position)
            value += translation_size;
        std::memcpy(frame.data() + i + 1, &value, 4);
        i += 5;
        position += 5;
    }
    position = end + 6;
    frame.replace(length - 6, 6, last);
}

void expect_as_defined(const std::string& frame, std::uint32_t translation_size, std::uint32_t position) {
    std::string expected = frame;
    std::string translated = frame;
    std::uint32_t expected_position = position;
    std::uint32_t translated_position = position;
    translate_plainly(expected, translation_size, expected_position);
    algorithm::lzx::translate_calls(reinterpret_cast<std::uint8_t*>(translated.data()), translated.size(),
                                    translation_size, translated_position);
    ASSERT_TRUE(translated == expected) << "size " << translation_size << ", position " << position;
    ASSERT_EQ(translated_position, expected_position);
}

void put(std::string& frame, std::size_t at, std::uint32_t operand) {
    frame[at] = '\xE8';
    std::memcpy(frame.data() + at + 1, &operand, 4);
}

} // namespace

TEST(LzxTranslation, HoldsAtEveryBorder) {
    for (const std::uint32_t size : {1u, 1000u, 12000000u, 0x7FFFFFFFu, 0xE8000000u, 0xFFFFFFFFu})
        for (const std::uint32_t start :
             {0u, 1u, 100u, 0x16FFFFF0u, 0x17000001u, 0x20000000u, 0xFFFFFFC5u, 0xFFFFFFF0u})
            for (std::size_t from_end = 5; from_end <= 40; ++from_end) {
                std::string frame(64, 'x');
                const std::size_t at = frame.size() - from_end;
                const std::uint32_t position = start + static_cast<std::uint32_t>(at);
                for (const std::uint32_t middle : {0u, size, 0u - position, 0xE8E8E8E8u, 0x00E8E8E8u})
                    for (std::uint32_t beside = 0; beside < 3; ++beside) {
                        put(frame, at, middle + beside - 1);
                        expect_as_defined(frame, size, start);
                    }
            }
}

TEST(LzxTranslation, TakesFramesOfAnySize) {
    support::numbers random(1);
    for (std::size_t length = 0; length < 20000; length += length < 200 ? 1 : 997)
        for (unsigned round = 0; round < 50; ++round) {
            std::string frame(length, '\0');
            // Operands often small, often negative, opcodes often among operands.
            for (auto& byte : frame)
                byte = random() % 3 == 0   ? '\xE8'
                       : random() % 2 == 0 ? static_cast<char>(0 - random() % 2)
                                           : static_cast<char>(random());
            const std::uint32_t position = round % 8 == 0 ? 0u - random() % 20000 : random() >> random() % 32;
            expect_as_defined(frame, random() >> random() % 32, position);
        }
}
