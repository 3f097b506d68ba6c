#include "core/states.h"

#include <array>

namespace {

constexpr std::array kFacts = {
#define TUBIX_MARK(state, screen, removal, back, frame, card)                                                \
    StateFacts{#state, ScreenKind::screen, Removal::removal, Back::back, FrameJob::frame, CardUse::card},
#define TUBIX_ENTER(state, action, ...) TUBIX_MARK(state, __VA_ARGS__)
    TUBIX_STATES(TUBIX_MARK, TUBIX_ENTER)
#undef TUBIX_MARK
#undef TUBIX_ENTER
};
static_assert(kFacts.size() == eStates + 1);

} // namespace

const StateFacts &factsOf(eMainStates state)
{
    return kFacts[state];
}
