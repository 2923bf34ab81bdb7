#pragma once

#include <QStringList>

namespace bvtsim {

// How an answer's body goes out; all but the first are answers no honest server gives.
enum class Pace {
    Whole,         // at once, with its length
    Trickle,       // with its length, then one byte every 20 ms
    EndlessChunks, // chunked, 64 KiB a chunk, for as long as the client reads
    HugeLength,    // a length no 64-bit number holds, 64 KiB of it, then silence
};

// The paces as the admin route's JSON names them, in the order of the enumeration.
inline const QStringList &paceNames()
{
    static const QStringList names{"whole", "trickle", "endless_chunks", "huge_length"};
    return names;
}

} // namespace bvtsim
