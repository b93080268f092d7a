// CIFs that cannot give a pattern: each problem is named by its CIF item; and the group read
// from the symmetry operators alone.
#include "TestSupport.h"
#include "common/QuarvexError.h"
#include "xray/CifPattern.h"
#include "xray/CifStructure.h"

#include <gtest/gtest.h>

#include <string>

namespace quarvex {
namespace {

constexpr std::string_view kCell = R"(_cell_length_a 4.91239(4)
_cell_length_b 4.91239(4)
_cell_length_c 5.40385(7)
_cell_angle_alpha 90
_cell_angle_beta 90
_cell_angle_gamma 120
)";
constexpr std::string_view kName = "_symmetry_space_group_name_H-M 'P 32 2 1'\n";
constexpr std::string_view kOperators = R"(loop_
_symmetry_equiv_pos_as_xyz
'x,y,z' '-y,x-y,2/3+z' 'y-x,-x,1/3+z' 'y,x,-z' 'x-y,-y,1/3-z' '-x,y-x,2/3-z'
)";
constexpr std::string_view kSites = R"(loop_
_atom_site_label
_atom_site_type_symbol
_atom_site_fract_x
_atom_site_fract_y
_atom_site_fract_z
Si1 Si4+ 0.4701 0. 0.6667
O1 O2- 0.4139 0.2674 0.7856
)";

// Quartz with one part replaced.
std::string quartz(std::string_view cell, std::string_view name, std::string_view operators,
                   std::string_view sites) {
    return "data_quartz\n_chemical_name_mineral Quartz\n" + std::string(cell) + std::string(name) +
           std::string(operators) + std::string(sites);
}

std::string replaced(std::string_view text, std::string_view from, std::string_view to) {
    std::string result(text);
    result.replace(result.find(from), from.size(), to);
    return result;
}

struct ProblemCase {
    const char* what;
    std::string content;
    const char* named; ///< what the message must contain
};

TEST(CifProblemsTest, EveryProblemNamesItsItem) {
    const ProblemCase cases[] = {
        {"no cell", quartz("", kName, kOperators, kSites), "\"_cell_length_a\" is missing"},
        {"unknown length", quartz(replaced(kCell, "5.40385(7)", "?"), kName, kOperators, kSites),
         "\"_cell_length_c\" is missing"},
        {"negative length",
         quartz(replaced(kCell, "4.91239(4)", "-4.9"), kName, kOperators, kSites),
         "\"_cell_length_a\" is -4.9"},
        {"flat cell",
         quartz(replaced(kCell, "_cell_angle_alpha 90", "_cell_angle_alpha 179.9"), kName,
                kOperators, kSites),
         "do not make a cell"},
        {"unknown space group", quartz(kCell, "_symmetry_space_group_name_H-M 'Q 9'\n", "", kSites),
         "space group \"Q 9\" (\"_symmetry_space_group_name_H-M\") is not known"},
        {"neither name nor operators", quartz(kCell, "", "", kSites),
         "\"_space_group_symop_operation_xyz\""},
        {"unreadable operator",
         quartz(kCell, kName, replaced(kOperators, "'y,x,-z'", "'y,x,-q'"), kSites),
         "\"y,x,-q\" (\"_symmetry_equiv_pos_as_xyz\")"},
        {"operators that are no group",
         quartz(kCell, kName, replaced(kOperators, "'y,x,-z'", "'y,x+1/4,-z'"), kSites),
         "(\"_symmetry_equiv_pos_as_xyz\") do not form a space group"},
        {"a singular operator",
         quartz(kCell, kName, replaced(kOperators, "'y,x,-z'", "'x,x,z'"), kSites),
         "\"x,x,z\" (\"_symmetry_equiv_pos_as_xyz\") is not a rotation"},
        {"no atom sites", quartz(kCell, kName, kOperators, ""), "\"_atom_site_label\" is missing"},
        {"sites without positions",
         quartz(kCell, kName, kOperators, "loop_\n_atom_site_label\n_atom_site_occupancy\nSi1 1\n"),
         "\"_atom_site_fract_x\" is missing"},
        {"unknown position", quartz(kCell, kName, kOperators, replaced(kSites, "0.7856", "?")),
         "\"O1\": \"_atom_site_fract_z\" is not a number"},
        {"unknown element", quartz(kCell, kName, kOperators, replaced(kSites, "O1 O2-", "Q1 Xx")),
         "\"Q1\": no known element in \"_atom_site_type_symbol\" \"Xx\""},
        {"not a CIF", "data_x\n_cell_length_a 'unclosed\nloop_ loop_\n",
         "not a CIF that can be read"},
        {"no data block", "# nothing but a comment\n", "no data block"},
    };
    const test::TempFolder folder;
    for (const ProblemCase& c : cases) {
        SCOPED_TRACE(c.what);
        const auto path = folder.write("Problem.cif", c.content);
        try {
            readCifReference(path, {});
            ADD_FAILURE() << "read without a message";
        } catch (const QuarvexError& error) {
            EXPECT_NE(error.text().find(c.named), std::string::npos) << error.text();
            EXPECT_EQ(error.text().rfind("Problem.cif: ", 0), 0U) << error.text();
            EXPECT_EQ(error.title(), kCifErrorTitle);
        }
    }
}

// Sites typed "X" or not typed at all take the element their label begins with.
TEST(CifProblemsTest, UntypedSitesTakeTheElementOfTheirLabel) {
    const test::TempFolder folder;
    const auto typed =
        readCifReference(folder.write("Typed.cif", quartz(kCell, kName, "", kSites)), {});
    const auto untyped = readCifReference(
        folder.write("Untyped.cif",
                     quartz(kCell, kName, "",
                            replaced(replaced(kSites, "O1 O2-", "OW1 X"), "Si1 Si4+", "Si1 ?"))),
        {});
    ASSERT_EQ(untyped.reflections.size(), typed.reflections.size());
    for (std::size_t r = 0; r < typed.reflections.size(); ++r) {
        EXPECT_FLOAT_EQ(untyped.reflections[r].intensity, typed.reflections[r].intensity)
            << "line " << r + 1;
    }
}

TEST(CifProblemsTest, AMissingFileIsNamed) {
    const test::TempFolder folder;
    EXPECT_THROW(readCifReference(folder.path() / "None.cif", {}), QuarvexError);
}

// |h| <= a / d_min: a 100000 A cell has about 10^15 triplets below 90 degrees.
TEST(CifProblemsTest, AHugeCellIsRefusedBeforeEnumerating) {
    const test::TempFolder folder;
    const auto path = folder.write(
        "Huge.cif",
        quartz(replaced(replaced(kCell, "4.91239(4)", "100000"), "4.91239(4)", "100000"), kName,
               kOperators, kSites));
    try {
        readCifReference(path, {});
        ADD_FAILURE() << "read without a message";
    } catch (const QuarvexError& error) {
        EXPECT_NE(error.text().find("narrow the range"), std::string::npos) << error.text();
    }
}

TEST(CifProblemsTest, SettingsOutsideTheirRangeAreRefused) {
    const test::TempFolder folder;
    const auto path = folder.write("Quartz.cif", quartz(kCell, kName, kOperators, kSites));
    for (const CifPatternSettings settings :
         {CifPatternSettings{.wavelength = 0.0},
          CifPatternSettings{.twoThetaMin = 40.0, .twoThetaMax = 30.0},
          CifPatternSettings{.twoThetaMax = 180.0}}) {
        EXPECT_THROW(readCifReference(path, settings), QuarvexError);
    }
}

// The operators alone give the same group as the name, and the same pattern.
TEST(CifProblemsTest, OperatorsWithoutANameGiveTheGroup) {
    const test::TempFolder folder;
    const DiffFileRecord named =
        readCifReference(folder.write("Named.cif", quartz(kCell, kName, "", kSites)), {});
    const DiffFileRecord listed =
        readCifReference(folder.write("Listed.cif", quartz(kCell, "", kOperators, kSites)), {});
    EXPECT_EQ(listed.spaceGroup, "P 32 2 1");
    EXPECT_EQ(listed.sym, named.sym);
    ASSERT_EQ(listed.reflections.size(), named.reflections.size());
    for (std::size_t r = 0; r < named.reflections.size(); ++r) {
        EXPECT_EQ(listed.reflections[r].hkl, named.reflections[r].hkl) << "line " << r + 1;
        EXPECT_FLOAT_EQ(listed.reflections[r].intensity, named.reflections[r].intensity)
            << "line " << r + 1;
    }
}

} // namespace
} // namespace quarvex
