// Tables of changes of a file. A row: a name, the changes as "offset/width=number", and the outcome, with tabs between.
#pragma once

#include "tests/support/bytes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

template <typename OutcomeOf>
void expectOutcomes(const std::string& table, const testsupport::Bytes& file, OutcomeOf outcomeOf)
{
    std::ifstream rows(PLATTERSCOPE_DVDMETA_TABLES + table);
    ASSERT_TRUE(rows) << table;
    for (std::string row; std::getline(rows, row);) {
        const std::size_t first = row.find('\t');
        const std::size_t second = row.find('\t', first + 1);
        std::istringstream changes(row.substr(first, second - first));
        std::vector<testsupport::Patch> patches;
        char sign = 0;
        for (testsupport::Patch patch;
             changes >> patch.offset >> sign >> patch.width >> sign >> patch.value;) {
            patches.push_back(patch);
        }
        EXPECT_EQ(outcomeOf(patched(file, patches)), row.substr(second + 1)) << row;
    }
}
