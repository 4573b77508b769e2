// A test's image, written and opened.
#pragma once

#include "discio/disc_image.h"
#include "tests/support/sparse_image.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

namespace discio_test {

class ImageFileTest : public testing::Test {
protected:
    discio::DiscImage imageOf(const testsupport::SparseImage& content)
    {
        return imageOf(content, content.sizeBytes());
    }
    discio::DiscImage imageOf(const testsupport::SparseImage& content, std::uint64_t sizeBytes)
    {
        content.writeTo(m_folder / "image", sizeBytes);
        const auto opened = discio::openRegularFile(m_folder / "image");
        return {opened.stream, opened.sizeBytes, std::make_shared<discio::ReadBudget>()};
    }

    testsupport::TemporaryFolder m_folder;
};

}  // namespace discio_test
