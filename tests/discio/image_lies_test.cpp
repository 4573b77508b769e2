// Images that lie about what they hold, or hold it far out: what is found, what is not, and what cannot be listed.
#include "discio/dvd_source.h"
#include "discio/iso9660.h"
#include "tests/discio/bluray_test.h"

#include <regex>

using namespace testsupport;
using namespace discio_test;

namespace {

constexpr std::uint32_t kAt2GiB = 1U << 20U;  // a sector
const Bytes kA = {1};
const Bytes kB = pattern(3000, 2);
const char* const kWhole = "A B C | A B C";

DiscTree smallDisc()
{
    return DiscTree()
        .add("BDMV/A.x", kA)
        .add("BDMV/B.x", kB)
        .add("BDMV/C.x", {})
        .add("AUDIO_TS/A.IFO", {})
        .add("VIDEO_TS/VIDEO_TS.IFO", kA);
}

class ImageLies : public BlurayTest {
protected:
    // The three files, then the listing of their directory: "A" is read, "A?5" gives 5 other bytes, "A:5" has a size
    // alone, "-" is not there. "closed": the image holds no file system.
    std::string seen(const SparseImage& image, std::uint64_t sizeBytes)
    {
        image.writeTo(m_path, sizeBytes);
        std::string text = open(m_path);
        if (text == "'" + m_path + "' is not a supported ISO-9660 or UDF image") { return "closed"; }
        for (const auto& [name, content] : {std::pair{'A', kA}, {'B', kB}, {'C', Bytes()}}) {
            const std::string file = std::string("BDMV/") + name + ".x";
            const std::uint64_t size = blurayFileSize(m_source, file);
            const Bytes bytes = read(file);
            if (bytes == content) {
                text += name;
            } else if (bytes != kUnreadable) {
                text += name + ('?' + std::to_string(bytes.size()));
            } else {
                text += size == 0 ? "-" : name + (':' + std::to_string(size));
            }
            text += ' ';
        }
        return text + "| " + list("BDMV") + (m_source.budget->reached() == nullptr ? "" : " limit");
    }
    std::string seen(const SparseImage& image) { return seen(image, image.sizeBytes()); }

    // As a DVD: "V" if its file is read, else how much of it is, or the message.
    [[nodiscard]] std::string seenAsDvd() const
    {
        discio::DvdDiscSource dvd;
        discio::DiscFileRef file;
        std::array<char, 512> text = {};
        if (openDvdSource(m_path.c_str(), dvd, text.data(), text.size()) != 0) {
            return std::regex_replace(text.data(), std::regex("'.*'"), "it");
        }
        if (openDvdFile(dvd, "VIDEO_TS.IFO", file, text.data(), text.size()) != 0) { return text.data(); }
        const auto [bytes, size] = readDiscFile(file, *dvd.budget);
        return bytes == kA ? "V" : std::to_string(bytes.size()) + " of " + std::to_string(size);
    }

    const std::string m_path = m_folder / "image";
};

// A form of the tables.
BuiltImage imageOf(const std::string& form)
{
    const std::map<std::string, std::pair<DiscForm, ImageSpec>> forms = {
        {"iso", {DiscForm::Iso, {}}},
        {"iso-2gib", {DiscForm::Iso, {.sectors = {{"BDMV", kAt2GiB}, {"VIDEO_TS", 3 * kAt2GiB}}}}},
        {"iso-2gib-1", {DiscForm::Iso, {.sectors = {{"BDMV", kAt2GiB - 1}}}}},
        {"iso-far", {DiscForm::Iso, {.sectors = {{"BDMV", 1000}}}}},
        {"hybrid", {DiscForm::Hybrid, {}}},
        {"udf", {DiscForm::Udf, {}}},
        {"udf-2gib", {DiscForm::Udf, {.sectors = {{"BDMV", kAt2GiB}}}}},
        {"udf-far", {DiscForm::Udf, {.sectors = {{"BDMV", 1000}}}}},
        {"udf-cut", {DiscForm::Udf, {.blocksPerExtent = 1}}},
        {"udf-cut-long", {DiscForm::Udf, {.descriptorKind = 1, .blocksPerExtent = 1}}},
        {"udf-embedded", {DiscForm::Udf, {.descriptorKind = 3}}},
        {"250", {DiscForm::Udf250, {}}},
        {"250-iso", {DiscForm::Udf250, {}}},  // with another disc in ISO-9660
        {"250-cut", {DiscForm::Udf250, {.blocksPerExtent = 3, .unrecordedBlocks = 40}}},
        {"250-first", {DiscForm::Udf250, {.hasMetadataCopy = false, .isMetadataMapFirst = true}}},
    };
    const auto& [discForm, spec] = forms.at(form);
    BuiltImage image = smallDisc().image(discForm, spec);
    if (form == "250-iso") { image.putAll(DiscTree().add("BDMV/B.x", kB).image(DiscForm::Iso)); }
    return image;
}

std::uint64_t placeIn(const BuiltImage& image, const std::string& name, const std::string& part)
{
    if (name.starts_with("sector")) { return std::stoull(name.substr(6)) * kSector; }
    const std::map<std::string, std::uint64_t> places = {
        {"descriptor", kIsoDescriptor},    {"anchor", kUdfAnchor},         {"volume", kUdfLogicalVolume},
        {"partition", kUdfFirstPartition}, {"fileset", image.fileSet},     {"copy", image.fileSetCopy},
        {"metadata", kMetadataFile},       {"mirror", kMetadataMirrorFile}};
    if (const auto known = places.find(name); known != places.end()) { return known->second; }
    const bool isFile = name.size() == 1 && name != "V";
    const Place& place = image.placeOf(name == "root" ? ""
                                       : name == "V"  ? "VIDEO_TS/VIDEO_TS.IFO"
                                       : isFile       ? "BDMV/" + name + ".x"
                                                      : name);
    return part == "record" ? place.record : part == "entry" ? place.entry : place.data;
}

// Puts the changes of a row into the image: "A.record+10:4=4096", "volume+456='V'", "fileset=zeros". Returns its size.
std::uint64_t put(const std::string& changes, BuiltImage& image)
{
    static const std::regex form(R"((\w+)(?:\.(\w+))?(?:\+(\d+))?(?::(\d))?=(\S+))");
    std::uint64_t sizeBytes = 0;
    std::istringstream texts(changes);
    std::smatch change;
    for (std::string text; texts >> text;) {
        if (!std::regex_match(text, change, form)) { throw std::runtime_error("not a change: " + text); }
        const std::string value = change[5];
        if (change[1] == "size") {
            sizeBytes = std::stoull(value);
            continue;
        }
        const std::uint64_t from = change[3].matched ? std::stoull(change[3]) : 0;
        const std::uint64_t offset = placeIn(image, change[1], change[2]) + from;
        if (value == "zeros") {
            image.put(offset, Bytes(kSector));
        } else if (value[0] == '\'') {
            image.put(offset, Bytes(value.begin() + 1, value.end() - 1));
        } else {
            image.putLe(offset, std::stoull(value), change[4].matched ? std::stoul(change[4]) : 1);
        }
    }
    return sizeBytes == 0 ? image.sizeBytes() : sizeBytes;
}

TEST_F(ImageLies, AreTakenAsTheTablesHaveThem)
{
    for (const char* name : {"lies_iso.txt", "lies_udf.txt", "lies_udf250.txt"}) {
        for (const auto& row : table(name)) {
            BuiltImage image = imageOf(row.at(0));
            const std::uint64_t sizeBytes = put(row.at(2), image);
            std::string text = seen(image, sizeBytes);
            if (row.at(0).starts_with("iso")) { text += "; " + seenAsDvd(); }
            EXPECT_EQ(text, row.at(3)) << row.at(0) << ": " << row.at(1);
        }
    }
}

TEST_F(ImageLies, EveryLayoutOfUdfGivesTheSame)
{
    DiscTree tree = smallDisc().add("BDMV/MORE/" + std::string(252, 'n') + ".x", kA);
    for (int i = 1; i < 100; ++i) {  // a directory of several blocks
        tree.add("BDMV/MORE/" + std::to_string(i) + ".x", kA);
    }
    for (unsigned layout = 0; layout < 36; ++layout) {
        const bool is250 = layout % 2 == 1;
        const bool isOther = layout / 2 % 2 == 1;
        ImageSpec spec;
        spec.descriptorKind = std::array<std::uint8_t, 3>{0, 1, 3}.at(layout / 4 % 3);
        spec.blocksPerExtent = std::array{1U << 18U, 1U, 3U}.at(layout / 12);
        spec.unrecordedBlocks = layout / 12 == 2 ? 40 : 0;
        spec.partitionNumber = spec.descriptorKind;
        spec.partitionsBefore = isOther && !is250 ? 1 : 0;
        spec.fileEntryTag = isOther ? 266 : 261;
        spec.hasMetadataCopy = spec.isMetadataMapFirst = isOther;
        const bool isLong = !is250 || spec.descriptorKind != 3;  // UDF 2.50 has no file entry of two blocks
        EXPECT_EQ(seen((isLong ? tree : smallDisc()).image(is250 ? DiscForm::Udf250 : DiscForm::Udf, spec)),
                  kWhole);
        EXPECT_EQ(std::ranges::count(list("BDMV/MORE"), ' '), isLong ? 99 : 0) << layout;
    }
    EXPECT_EQ(seen(tree.image(DiscForm::Udf, {.partitionsBefore = 15})), kWhole);
    EXPECT_EQ(seen(tree.image(DiscForm::Udf, {.partitionsBefore = 16})), "closed");
}

TEST_F(ImageLies, FilesOfManyExtentsKeepTheirSizeWithinTheLimit)
{
    BuiltImage image = imageOf("udf");
    const std::uint64_t size = 40ULL * 0x3FFFF800 - 1;
    const std::vector<UdfExtent> extents(40, {0x3FFFF800, 1000});
    image.put(image.placeOf("BDMV/A.x").entry,
              udfFileEntry({.informationLength = size, .descriptors = extents}));
    EXPECT_EQ(seen(image, put("B.entry+172:4=1048576 size=1073741824", image)),
              "A:" + std::to_string(size) + " B C | A B C");
    for (int i = 1; i < 30; ++i) {  // the directories take a little of 32 MiB too
        EXPECT_EQ(blurayFileSize(m_source, "BDMV/B.x"), kB.size());
    }
    EXPECT_EQ(blurayFileSize(m_source, "BDMV/B.x"), 0U);
    EXPECT_STREQ(m_source.budget->reached(), "the directories and file entries are larger than 32 MiB");

    BuiltImage disc = imageOf("250");
    put("metadata+212:4=16 metadata+216:4=32768 metadata+224:4=32768 metadata+228:4=48", disc);
    EXPECT_EQ(seen(disc), kWhole);
    EXPECT_EQ(m_source.udf.partitions.at(1).runs.size(), 1U) << "two extents that follow each other are one";

    EXPECT_EQ(seen(imageOf("udf-cut")), kWhole);
    m_source.budget->lower(discio::ReadBudget::Bound::Pieces, 1, "pieces");
    EXPECT_EQ(read("BDMV/B.x"), kB) << "the first piece of a file is free";
    EXPECT_EQ(read("BDMV/B.x"), kUnreadable);
    EXPECT_STREQ(m_source.budget->reached(), "pieces");
}

TEST_F(ImageLies, AnImageThatBecomesShorterIsNotRead)
{
    EXPECT_EQ(seen(imageOf("udf")), kWhole);
    std::filesystem::resize_file(m_path, imageOf("udf").placeOf("BDMV/B.x").data + kB.size() - 1);
    EXPECT_EQ(read("BDMV/B.x"), kUnreadable);
}

// The last record crosses the end of the first 65,536 bytes or begins there. No earlier byte is read twice.
TEST_F(ImageLies, RecordsOfIsoGoOnOverBlocksAndWindows)
{
    for (const std::string& first :
         {std::string("FILE10000"), std::string(25, 'F')}) {  // records of 42 and 58 bytes
        Bytes bytes;
        std::string wanted;
        for (std::uint32_t i = 10000; i <= 11560; ++i) {
            const std::string name = i == 10000 ? first : "FILE" + std::to_string(i);
            append(bytes, isoRecord({name, i}));
            wanted += name + '@' + std::to_string(i) + ' ';
        }
        writeFile(m_path, bytes);
        const discio::OpenedFile image = discio::openRegularFile(m_path);
        discio::ReadBudget budget;
        budget.lower(discio::ReadBudget::Bound::FileSystemBytes, 65536 + 42, "bytes");
        const auto size = static_cast<std::uint32_t>(bytes.size());
        discio::IsoDirectoryWalk walk(*image.stream, kSector, {0, size}, budget);
        std::string text;
        while (const auto record = walk.next()) {
            text += record->name + '@' + std::to_string(record->extent.block) + ' ';
        }
        EXPECT_EQ(text, wanted);
        EXPECT_TRUE(walk.isAtEnd());
    }
}

}  // namespace
