// The single-instance register as a whole, filled with bytes that another
// process could have written: the header checks and every slot's reading
// stay inside the register and agree with each other.

#include "FuzzSupport.h"
#include "KDSingleApplicationGuard_p.h"

#include <algorithm>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool silenced = (fuzz::silenceQtMessages(), true);
    (void)silenced;

    // Short inputs are repeated, so that every slot gets bytes of its own.
    auto reg = std::make_unique<InstanceRegister>();
    auto* bytes = reinterpret_cast<std::uint8_t*>(reg.get());
    std::memset(bytes, 0, sizeof(InstanceRegister));
    if (size > 0) {
        std::size_t filled = std::min(size, sizeof(InstanceRegister));
        std::memcpy(bytes, data, filled);
        // Doubling the copied part keeps a one-byte input from taking a
        // copy per byte of the register.
        for (; filled < sizeof(InstanceRegister); filled *= 2)
            std::memcpy(bytes + filled, bytes, std::min(filled, sizeof(InstanceRegister) - filled));
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
