// The decoding of a command line from a slot of the single-instance
// register, which another process wrote: whatever the slot holds, decoding
// stays inside it, and encoding what was decoded gives the same list back
// (or a prefix of it, marked as cut, when it no longer fits).

#include "FuzzSupport.h"
#include "KDSingleApplicationGuard_p.h"

#include <algorithm>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool silenced = (fuzz::silenceQtMessages(), true);
    (void)silenced;

    ProcessInfo slot;
    std::memset(&slot, 0, sizeof slot);
    std::memcpy(&slot, data, std::min(size, sizeof slot));
    slot.isFree();
    slot.isTaken();

    bool truncated = false;
    const QStringList arguments = slot.arguments(&truncated);

    ProcessInfo copy;
    copy.reset();
    copy.setArguments(arguments);
    bool copyTruncated = false;
    const QStringList again = copy.arguments(&copyTruncated);
    FUZZ_CHECK(again.size() <= arguments.size());
    FUZZ_CHECK(std::equal(again.begin(), again.end(), arguments.begin()));
    FUZZ_CHECK(copyTruncated == (again.size() < arguments.size()));
    return 0;
}
