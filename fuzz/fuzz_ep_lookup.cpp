// The index over entry points against the plainest walk over the same file: they must agree on every question.
//
// Four questions of 6 bytes each (time, little-endian; which end; STC sequence), then the file.
#include "bdmeta/ep_map.h"
#include "fuzz/abort_unless.h"
#include "tests/bdmeta/ep_walk.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t kQuestionCount = 4;
constexpr std::size_t kQuestionSize = 6;

struct Question {
    std::uint32_t time = 0;
    bool isStart = false;
    std::uint8_t stcId = 0;
};

Question questionAt(const std::uint8_t* bytes)
{
    Question question;
    for (std::size_t i = 4; i > 0; --i) {
        question.time = question.time << 8U | bytes[i - 1];
    }
    question.isStart = bytes[4] % 2 == 0;
    question.stcId = bytes[5];
    return question;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kQuestionsSize = kQuestionCount * kQuestionSize;
    if (size < kQuestionsSize) { return 0; }
    bdmeta::BlurayClip clip;
    clip.rawData.assign(data + kQuestionsSize, data + size);
    clip.sourcePacketCount = 123456;
    const EpWalk walk(clip.rawData, clip.sourcePacketCount);
    discio::ReadBudget budget;
    bdmeta::EpMap map(clip, budget);
    for (std::size_t i = 0; i < kQuestionCount; ++i) {
        const Question question = questionAt(data + i * kQuestionSize);
        std::uint32_t packet = 0;
        const bool isFound = findEntryPacket(map, question.time, question.isStart, question.stcId, packet);
        if (budget.reached() != nullptr) { return 0; }
        const auto expected = walk.find(question.time, question.isStart, question.stcId);
        fuzz::abortUnless(isFound == expected.has_value());
        if (expected) { fuzz::abortUnless(packet == *expected); }
    }
    return 0;
}
