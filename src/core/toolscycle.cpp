#include "core/toolscycle.h"

#include <algorithm>

namespace {

constexpr quint8 kDarkestBacklight = 2;
constexpr quint8 kBrightestBacklight = 7;

// In the order of eImagerTypes.
constexpr std::array kHeads = {toolscycle::Head{eMinimodule_10m, "10m", "Minimodule 10m"},
                               toolscycle::Head{e60meter, "60m", "60m"},
                               toolscycle::Head{e30meter, "30m", "30m"}};

constexpr int kDelays = int(std::tuple_size_v<toolscycle::DelayOptions>);

} // namespace

namespace toolscycle {

qint8 autoShutdownAfter(qint8 index)
{
    return index > 0 && index < kDelays ? qint8(index - 1) : qint8(kDelays - 1);
}

quint8 backlightAfter(quint8 level)
{
    return level < kBrightestBacklight ? std::max(quint8(level + 1), kDarkestBacklight) : kDarkestBacklight;
}

quint8 languageAfter(quint8 index, int languages)
{
    return index < languages - 1 ? quint8(index + 1) : quint8(0);
}

Delays delaysAround(const DelayOptions &options, int index)
{
    const int chosen = index >= 0 && index < kDelays ? index : 0;
    const auto text = [&](int at) {
        return QStringLiteral("%1 min").arg(options[size_t((at + kDelays) % kDelays)]);
    };
    return {text(chosen + 1), text(chosen), text(chosen - 1)};
}

const Head &headAfter(eImagerTypes current, eImagerTypes fitted)
{
    if (current == e60meter || current == e30meter)
        return kHeads[eMinimodule_10m];
    return kHeads[fitted == e30meter ? e30meter : e60meter];
}

const Head *headOf(eImagerTypes type)
{
    return size_t(type) < kHeads.size() ? &kHeads[size_t(type)] : nullptr;
}

} // namespace toolscycle
