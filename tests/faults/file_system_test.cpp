// Other kinds of files in the places of a disc and its files, and the paths and names that a system allows.
#include "tests/faults/small_disc.h"
#include "tests/support/scopes.h"

using namespace faults;
using namespace testsupport;
namespace fs = std::filesystem;

namespace {

struct Fault {
    const char* name;
    void (*make)(const std::string& path);
};

const Fault kFaults[] = {
    {"a locked file", [](auto& path) { EXPECT_EQ(::mknod(path.c_str(), S_IFREG, 0), 0); }},
    {"a locked directory", [](auto& path) { EXPECT_EQ(::mkdir(path.c_str(), 0), 0); }},
    {"a FIFO", [](auto& path) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
    {"a socket", [](auto& path) { EXPECT_EQ(::mknod(path.c_str(), S_IFSOCK | 0600, 0), 0); }},
    {"/dev/zero", [](auto& path) { fs::create_symlink("/dev/zero", path); }},
    {"/dev/null", [](auto& path) { fs::create_symlink("/dev/null", path); }},
    {"a link to itself", [](auto& path) { fs::create_symlink(path, path); }},
    {"a TiB of zeros", [](auto& path) { std::ofstream(path).seekp((1LL << 40U) - 1).put('\0'); }},
};

TEST(FileSystem, SomethingElseInPlaceOfAPartOfADisc)
{
    const UnprivilegedUser meanwhile;
    for (const Family family : {Family::Dvd, Family::Bluray}) {
        const TemporaryFolder sample;
        treeOf(family).writeDirectory(sample / "disc");
        for (const fs::directory_entry& part : fs::recursive_directory_iterator(sample.path())) {
            const std::string name = fs::relative(part, sample.path());
            for (const Fault& fault : kFaults) {
                SCOPED_TRACE(fault.name + (" as " + name));
                const TemporaryFolder folder;
                treeOf(family).writeDirectory(folder / "disc");
                fs::remove_all(folder / name);
                fault.make(folder / name);
                const std::string text = boundedRead(family, folder / "disc");
                // Of a stream file only the size counts, which needs no permission.
                std::error_code isLink;
                const bool isSize = name.ends_with(".m2ts") && fs::is_regular_file(folder / name, isLink);
                EXPECT_TRUE(isSize ? isWhole(text) : isRefusalOrWarning(text)) << text;
                if (fs::is_directory(folder / name, isLink)) { fs::remove(folder / name); }
            }
        }
    }
}

TEST(FileSystem, PathsAreBytes)
{
    for (const std::string& name : {std::string("\xFF\xFE \xC3 disc\n%s'"), std::string(255, 'x'),
                                    'x' + std::string(3500, '/') + "disc"}) {
        for (const Family family : {Family::Dvd, Family::Bluray}) {
            for (const DiscForm form : {DiscForm::Directory, DiscForm::Iso}) {
                const TemporaryFolder folder;
                const fs::path path = folder / name;
                fs::create_directories(path.parent_path());
                fs::rename(treeOf(family).write(form, folder), path);
                EXPECT_EQ(readDisc(family, path), wholeDisc(family));
                EXPECT_PRED1(isRefusalOrWarning, readDisc(family, path.string() + std::string(5000, '/')));
            }
        }
    }
}

TEST(FileSystem, NamesOnTheDiscAreBytes)
{
    for (const DiscForm form : kAllBlurayForms) {
        const TemporaryFolder folder;
        const DiscTree tree = treeOf(Family::Bluray).add("BDMV/CLIPINF/\xC3.clpi", ClpiSpec().build());
        const std::string text = readDisc(Family::Bluray, tree.write(form, folder));
        EXPECT_TRUE(isWhole(text) && text != wholeDisc(Family::Bluray)) << text;
    }
}

}  // namespace
