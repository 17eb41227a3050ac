#include "codec/lzx/lzx_translation.h"

#include "support/numbers.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <utility>

namespace {

/// The translation as it is defined, byte by byte.
void translate_plainly(std::string& frame, std::uint32_t translation_size, std::uint32_t& position,
                       bool published) {
    const std::size_t stop = frame.size() - std::min<std::size_t>(frame.size(), 6);
    const std::uint32_t first = std::exchange(position, position + static_cast<std::uint32_t>(frame.size()));
    const std::string last = frame.substr(stop);
    frame.replace(stop, 6, last.size(), '\xE8');
    for (std::size_t i = 0; i < stop; ++i) {
        const auto at = first + static_cast<std::uint32_t>(i);
        if (frame[i] != '\xE8')
            continue;
        if (at >= first + static_cast<std::uint32_t>(stop) || (published && i + 10 >= frame.size()))
            break;
        std::uint32_t value;
        std::memcpy(&value, frame.data() + i + 1, 4);
        value += value < translation_size ? 0 - at : 0 - value < at + published ? translation_size : 0;
        std::memcpy(frame.data() + i + 1, &value, 4);
        i += 4;
    }
    frame.replace(stop, 6, last);
}

void expect_as_defined(const std::string& frame, std::uint32_t translation_size, std::uint32_t position) {
    for (const bool published : {false, true}) {
        std::string expected = frame, translated = frame;
        std::uint32_t expected_position = position, translated_position = position;
        translate_plainly(expected, translation_size, expected_position, published);
        algorithm::lzx::translate_calls(reinterpret_cast<std::uint8_t*>(translated.data()), translated.size(),
                                        translation_size, translated_position, published);
        ASSERT_TRUE(translated == expected) << "size " << translation_size << ", position " << position;
        ASSERT_EQ(translated_position, expected_position);
    }
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
                        const std::uint32_t operand = middle + beside - 1;
                        frame[at] = '\xE8';
                        std::memcpy(frame.data() + at + 1, &operand, 4);
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
