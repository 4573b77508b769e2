#include "discio/disc_directory.h"

#include "discio/text.h"

#include <utility>

namespace discio {

void DiscDirectory::add(DiscEntry entry, bool isFindable)
{
    if (isFindable) { m_firstByFoldedName.try_emplace(caseFolded(entry.name), m_entries.size()); }
    m_entries.push_back(std::move(entry));
}

const DiscEntry* DiscDirectory::find(std::string_view name) const
{
    const auto found = m_firstByFoldedName.find(caseFolded(name));
    return found == m_firstByFoldedName.end() ? nullptr : &m_entries[found->second];
}

}  // namespace discio
