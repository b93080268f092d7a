// Which reader takes which file, and bad input: each a clear message naming the place, never a
// crash, and the loaded spectra unchanged.
#include "TestSupport.h"
#include "common/QuarvexError.h"
#include "readers/LoadSpectra.h"
#include "readers/SpectrumFormats.h"

#include <gtest/gtest.h>

namespace quarvex {
namespace {

TEST(ReaderInput, ContentPicksTheReader) {
    struct Case {
        const char* name;
        std::string_view content;
        const char* format;
    };
    const Case cases[] = {
        {"pairs.txt", "1 2\n3 4\n", "text"},
        {"commas.txt", "1, 2\n3, 4\n", "text"},
        {"stray.txt", "1 2\nfoo\n3 4\n", "text"},
        {"words.txt", "hello\n", "text"},
        {"empty.dat", "", "text"},
        {"keys.csv", "##NAMES=x\n<COM>\n</COM>\nx,y\n1,2\n", "text"},
        {"calibrated.txt", "CAL_OFFSET 1\nCAL_SLOPE 2\n5\n6\n", "text"},
        {"header.txt", "x y\n1 2\n", "CSV"},
        {"semicolons.dat", "1;2\n3;4\n", "CSV"},
        {"three.txt", "1 2 3\n4 5 6\n", "CSV"},
        {"decimal.txt", "1,5\t2,5\n3,5\t4\n", "CSV"},
        {"one.csv", "1\n2\n", "CSV"},
        {"any.txt", "##TITLE=a\n##JCAMP-DX=4.24\n", "JCAMP-DX"},
        {"spaced.dx", "##TITLE=a\n## jcamp_dx = 5.01 $$ x\n", "JCAMP-DX"},
    };
    const test::TempFolder folder;
    for (const Case& c : cases) {
        EXPECT_EQ(c.format, detectSpectrumFormat(folder.write(c.name, c.content)).name) << c.name;
    }
}

TEST(ReaderInput, BadFilesNameWhatIsWrong) {
    struct Case {
        const char* name;
        std::string_view content;
        const char* message; // the part after "<path>: "
    };
    using namespace std::string_view_literals;
    const Case cases[] = {
        {"one.csv", "x\n1\n2\n", "line 2 holds one column: an x and a y column are needed"},
        {"text.csv", "x,y\n1,2\n3,abc\n", "line 3, column 2: \"abc\" is not a number"},
        {"short.csv", "x,y\n1,2\n3\n", "line 3 has 1 column, column 2 is missing"},
        {"huge.csv", "x,y\n1,1e39\n", "line 2, column 2: the value is not a finite"},
        {"binary.csv", "\x89PNG\r\n\x1a\n\0\0\0"sv,
         "not a spectrum file Quarvex can read (tried: text, CSV, JCAMP-DX, SPC, diffraction "
         "formats)"},
        {"bad.jdx", "##TITLE=a\n##JCAMP-DX=5\n##XYDATA=(X++(Y..Y))\n1 2\n1 !\n##END=\n",
         "line 5: not a line of ##XYDATA (AFFN or ASDF) values"},
        {"nolast.jdx", "##TITLE=a\n##JCAMP-DX=5\n##XYDATA=(X++(Y..Y))\n1 2 3\n##END=\n",
         "the ##XYDATA block gives neither LASTX nor DELTAX"},
        {"pairs.jdx", "##TITLE=a\n##JCAMP-DX=5\n##XYPOINTS=(XY..XY)\n1, 2\n3, x\n##END=\n",
         "line 5: \"x\" is not a number"},
    };
    const test::TempFolder folder;
    for (const Case& c : cases) {
        const auto path = folder.write(c.name, c.content);
        try {
            readSpectrumFile(path);
            ADD_FAILURE() << c.name << " was read";
        } catch (const QuarvexError& error) {
            EXPECT_TRUE(error.text().starts_with(path.string() + ": " + c.message))
                << c.name << ": " << error.text();
        }
    }
}

TEST(ReaderInput, FilesWithoutDataSaySo) {
    const test::TempFolder folder;
    for (const auto& [name, content] : std::initializer_list<std::pair<const char*, const char*>>{
             {"nothing.jdx", "##TITLE=a\n##JCAMP-DX=5\n##END=\n"},
             {"header.csv", "x,y\n"},
             {"words.txt", "hello\n"}}) {
        try {
            readSpectrumFile(folder.write(name, content));
            ADD_FAILURE() << name << " was read";
        } catch (const QuarvexError& error) {
            EXPECT_TRUE(error.text().starts_with("No data points found in")) << error.text();
        }
    }
}

TEST(ReaderInput, AFailedLoadChangesNothing) {
    const test::TempFolder folder;
    SPECDATA_GLOBALS specdata;
    MINERALINFO info;
    loadSpectrumFile(specdata, info, folder.write("good.csv", "x,y\n1,2\n3,4\n"));
    const SPECDATA_GLOBALS before = specdata;
    const MINERALINFO infoBefore = info;
    // The second spectrum of the file is bad: the first must not be added either.
    const auto linked = folder.write("half.jdx", "##TITLE=set\n##JCAMP-DX=5\n##TITLE=one\n"
                                                 "##JCAMP-DX=5\n##XYPOINTS=(XY..XY)\n1,2\n"
                                                 "##END=\n##TITLE=two\n##JCAMP-DX=5\n"
                                                 "##XYPOINTS=(XY..XY)\n1,1e40\n##END=\n##END=\n");
    for (const auto& path : {linked, folder.write("bad.csv", "x,y\n1,z\n"),
                             folder.write("bin.dat", std::string_view("\0\1\2", 3))}) {
        EXPECT_THROW(loadSpectrumFile(specdata, info, path), QuarvexError) << path;
        EXPECT_EQ(before.count(), specdata.count());
        EXPECT_EQ(before.X, specdata.X);
        EXPECT_EQ(before.NAME, specdata.NAME);
        EXPECT_EQ(infoBefore.names, info.names);
    }
}

} // namespace
} // namespace quarvex
