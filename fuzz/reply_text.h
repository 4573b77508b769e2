// An input as the body of a reply.
#pragma once

#include "fuzz/target.h"

#include <QByteArray>

namespace fuzz {

inline QByteArray textOf(Input input)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(input.data()),
                                   static_cast<qsizetype>(input.size()));
}

}  // namespace fuzz
