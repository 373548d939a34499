// The single-instance register as a whole, filled with bytes that another
// process could have written: the header checks and every slot's reading
// stay inside the register and agree with each other.

#include "FuzzSupport.h"
#include "KDSingleApplicationGuard_p.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

namespace {

constexpr std::size_t RepeatedSlots = 2;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool silenced = (fuzz::silenceQtMessages(), true);
    (void)silenced;

    // Short inputs are repeated over the header and the first slots, so
    // that each of them sees the bytes at another offset; the slots after
    // those stay as a new register has them (free, no arguments) unless the
    // input is longer. Reading every slot of a register full of long
    // argument lists takes milliseconds.
    auto reg = std::make_unique<InstanceRegister>();
    auto* bytes = reinterpret_cast<std::uint8_t*>(reg.get());
    std::memset(bytes, 0, sizeof(InstanceRegister));
    reg->initialise(0);
    const std::size_t repeatedPart =
        std::max(size, offsetof(InstanceRegister, processInfo) + RepeatedSlots * sizeof(ProcessInfo));
    const std::size_t wanted = std::min(repeatedPart, sizeof(InstanceRegister));
    if (size > 0) {
        std::size_t filled = std::min(size, wanted);
        std::memcpy(bytes, data, filled);
        // Doubling the copied part keeps a one-byte input from taking a
        // copy per byte.
        for (; filled < wanted; filled *= 2)
            std::memcpy(bytes + filled, bytes, std::min(filled, wanted - filled));
    }

    reg->isValid();
    reg->policy();
    reg->version();
    for (const ProcessInfo& slot : reg->processInfo) {
        FUZZ_CHECK(!(slot.isFree() && slot.isTaken()));
        bool truncated = false;
        // Each argument takes its two length bytes at least.
        FUZZ_CHECK(slot.arguments(&truncated).size() <= ProcessInfo::ArgumentBytes / 2);
    }
    return 0;
}
