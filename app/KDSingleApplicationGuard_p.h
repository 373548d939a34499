#pragma once

// The instance register that all guards of one application name share in a
// user's session: one block of shared memory in host byte order, a 16-byte
// header followed by one slot per process. The layout is fixed; every process
// that uses the register reads and writes it byte for byte as declared here.

#include <QStringList>

#include <cstddef>

// Bits of ProcessInfo::command; several may be set at once.
enum Command : quint32 {
    CmdNone = 0x00,          // live primary slot, nothing pending
    CmdExited = 0x01,        // the owner has ended; the primary reports it and frees the slot
    CmdNew = 0x02,           // the owner has just registered; the primary reports it
    CmdFree = 0x04,          // the slot is not in use
    CmdShutdown = 0x08,      // the owner is asked to quit its event loop
    CmdKill = 0x10,          // the owner is asked to end at once
    CmdBecomePrimary = 0x20, // the owner is to take over slot 0
    CmdRaise = 0x40,         // the owner is asked to raise its window
};

// One slot: the owner's process id, its command bits and its argument list.
// The arguments are stored one after another as a 16-bit length and that many
// bytes of UTF-8, closed by an end marker; the rest of the storage is zero.
struct ProcessInfo
{
    static constexpr int ArgumentBytes = 1024;
    static constexpr quint16 RegularEnd = 0xFFFE;
    static constexpr quint16 PrematureEnd = 0xFFFF;

    qint64 pid;
    quint32 command;
    quint32 reserved;
    char argumentStorage[ArgumentBytes];

    // Turns the slot into a free one: no owner, CmdFree, an empty list.
    void reset();
    // Equal to a free slot in command word and argument storage; the
    // process id is not compared.
    bool isFree() const;
    // Neither exited nor free: someone owns the slot.
    bool isTaken() const;

    // Stores the list, cut at an argument boundary when it does not fit.
    void setArguments(const QStringList& arguments);
    // Reads the list back; never reads past the storage, whatever it holds.
    QStringList arguments(bool* truncated) const;
};

struct InstanceRegister
{
    static constexpr int SlotCount = 128;
    static constexpr quint32 LayoutVersion = 0;

    char signature[12];
    quint32 bitFields; // bits 0-7 policy, 8-27 number of slots, 28-31 layout version
    ProcessInfo processInfo[SlotCount];

    // Signature, policy and layout in the header, every slot free.
    void initialise(int policy);
    bool isValid() const;
    int policy() const;
    void setPolicy(int policy);
    quint32 version() const;
};

static_assert(sizeof(ProcessInfo) == 1040, "a slot takes 1040 bytes");
static_assert(offsetof(ProcessInfo, command) == 8 && offsetof(ProcessInfo, argumentStorage) == 16,
              "slot fields at their fixed offsets");
static_assert(offsetof(InstanceRegister, processInfo) == 16, "slots follow the 16 header bytes");
static_assert(sizeof(InstanceRegister) == 133136, "the register takes 133136 bytes");
