// Reading a small-molecule CIF with gemmi: the data block, the cell checked item by item, the
// symmetry group from the operators or the names, and the atom sites with their elements.
#include "xray/CifStructure.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"

#include <gemmi/cif.hpp>
#include <gemmi/it92.hpp>
#include <gemmi/smcif.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <exception>
#include <utility>

namespace quarvex {

namespace {

constexpr std::array<const char*, 3> kLengthTags{"_cell_length_a", "_cell_length_b",
                                                 "_cell_length_c"};
constexpr std::array<const char*, 3> kAngleTags{"_cell_angle_alpha", "_cell_angle_beta",
                                                "_cell_angle_gamma"};
constexpr std::array<const char*, 2> kOperatorTags{"_space_group_symop_operation_xyz",
                                                   "_symmetry_equiv_pos_as_xyz"};
constexpr std::array<const char*, 2> kNameTags{"_space_group_name_H-M_alt",
                                               "_symmetry_space_group_name_H-M"};
constexpr std::array<const char*, 2> kHallTags{"_space_group_name_Hall",
                                               "_symmetry_space_group_name_Hall"};
constexpr std::array<const char*, 3> kTitleTags{"_chemical_name_mineral", "_chemical_name_common",
                                                "_chemical_name_systematic"};
constexpr std::array<const char*, 3> kPositionTags{"_atom_site_fract_x", "_atom_site_fract_y",
                                                   "_atom_site_fract_z"};

constexpr std::size_t kMaxSpaceGroupOrder = 192;

// The element a site label begins with: its first two letters when they name one ("Ca1"),
// else its first letter ("OW1", "O1w"); X when neither does.
gemmi::El elementOfLabel(const std::string& label) {
    const auto letter = [&](std::size_t i) {
        return i < label.size() && std::isalpha(static_cast<unsigned char>(label[i])) != 0;
    };
    if (letter(0) && letter(1)) {
        const gemmi::El pair = gemmi::find_element(label.substr(0, 2).c_str());
        if (pair != gemmi::El::X) {
            return pair;
        }
    }
    return letter(0) ? gemmi::find_element(label.substr(0, 1).c_str()) : gemmi::El::X;
}

class CifCrystalReader {
public:
    explicit CifCrystalReader(const std::filesystem::path& path)
        : file_(path.filename().string()), stem_(path.stem().string()) {}

    [[noreturn]] void fail(const std::string& what) const {
        throw QuarvexError(file_ + ": " + what, std::string(kCifErrorTitle));
    }

    CifCrystal read(gemmi::cif::Block& block);

private:
    // The value of a single item, unquoted; empty when absent or given as "?" or ".".
    static std::string value(gemmi::cif::Block& block, const char* tag) {
        const std::string* raw = block.find_value(tag);
        return raw == nullptr || gemmi::cif::is_null(*raw) ? std::string{}
                                                           : gemmi::cif::as_string(*raw);
    }
    double cellValue(gemmi::cif::Block& block, const char* tag, bool angle);
    void readCell(gemmi::cif::Block& block);
    void readGroup(gemmi::cif::Block& block);
    bool groupFromOperators(gemmi::cif::Block& block);
    void requireClosed(const gemmi::GroupOps& group, const char* tag) const;
    void useGroup(const gemmi::SpaceGroup& group);
    void readSites(gemmi::cif::Block& block);

    std::string file_;
    std::string stem_;
    CifCrystal crystal_;
};

CifCrystal CifCrystalReader::read(gemmi::cif::Block& block) {
    crystal_.structure = gemmi::make_small_structure_from_block(block);
    crystal_.title = stem_;
    for (const char* tag : kTitleTags) {
        // The first line of the name: it becomes the title line of the ".out" file.
        const std::string name = value(block, tag);
        const std::string_view line = trimmed(std::string_view(name).substr(0, name.find('\n')));
        if (!line.empty() && line != "?" && line != ".") {
            crystal_.title = std::string(line);
            break;
        }
    }
    readCell(block);
    readGroup(block);
    readSites(block);
    return std::move(crystal_);
}

double CifCrystalReader::cellValue(gemmi::cif::Block& block, const char* tag, bool angle) {
    const std::string text = value(block, tag);
    if (text.empty()) {
        if (!angle) {
            fail("no unit cell: \"" + std::string(tag) + "\" is missing");
        }
        crystal_.notes.push_back("\"" + std::string(tag) + "\" is missing: taken as 90 degrees");
        return 90.0;
    }
    const double number = gemmi::cif::as_number(text);
    const bool valid = angle ? number > 0.0 && number < 180.0 : number > 0.0;
    if (!std::isfinite(number) || !valid) {
        fail("\"" + std::string(tag) + "\" is " + text + ": not " +
             (angle ? "an angle between 0 and 180 degrees" : "a positive length"));
    }
    return number;
}

void CifCrystalReader::readCell(gemmi::cif::Block& block) {
    std::array<double, 6> cell{};
    for (std::size_t i = 0; i < 3; ++i) {
        cell[i] = cellValue(block, kLengthTags[i], false);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        cell[i + 3] = cellValue(block, kAngleTags[i], true);
    }
    gemmi::UnitCell& unitCell = crystal_.structure.cell;
    unitCell.set(cell[0], cell[1], cell[2], cell[3], cell[4], cell[5]);
    if (!(unitCell.volume > 0.0) || !std::isfinite(unitCell.volume)) {
        fail("the angles \"_cell_angle_alpha\", \"_cell_angle_beta\" and \"_cell_angle_gamma\" "
             "do not make a cell");
    }
}

// In a Hall symbol the axis symbols ' " * follow a rotation order ("P 3 2\"", "R 3*"); gemmi
// indexes past its tables on one that follows anything else (found by fuzzing), so such a
// symbol never reaches it.
bool axisSymbolsFollowOrders(const std::string& hall) {
    for (std::size_t i = 0; i < hall.size(); ++i) {
        const bool axis = hall[i] == '\'' || hall[i] == '"' || hall[i] == '*';
        if (axis && (i == 0 || hall[i - 1] < '1' || hall[i - 1] > '6')) {
            return false;
        }
    }
    return true;
}

// The operators define the frame of the coordinates, so they win over the names.
void CifCrystalReader::readGroup(gemmi::cif::Block& block) {
    if (groupFromOperators(block)) {
        return;
    }
    for (const char* tag : kNameTags) {
        if (const std::string name = value(block, tag); !name.empty()) {
            const gemmi::SpaceGroup* group = gemmi::find_spacegroup_by_name(
                name, crystal_.structure.cell.alpha, crystal_.structure.cell.gamma);
            if (group == nullptr) {
                fail("space group \"" + name + "\" (\"" + tag +
                     "\") is not known and no symmetry operators "
                     "(\"_space_group_symop_operation_xyz\") are given");
            }
            useGroup(*group);
            return;
        }
    }
    for (const char* tag : kHallTags) {
        if (const std::string hall = value(block, tag); !hall.empty()) {
            const gemmi::SpaceGroup* group = nullptr;
            try {
                if (axisSymbolsFollowOrders(hall)) {
                    group = gemmi::find_spacegroup_by_ops(gemmi::symops_from_hall(hall.c_str()));
                }
            } catch (const std::exception&) {
            }
            if (group == nullptr) {
                fail("Hall symbol \"" + hall + "\" (\"" + tag + "\") is not known");
            }
            useGroup(*group);
            return;
        }
    }
    fail("no space group: neither symmetry operators (\"_space_group_symop_operation_xyz\") nor a "
         "space-group name (\"_space_group_name_H-M_alt\") are given");
}

bool CifCrystalReader::groupFromOperators(gemmi::cif::Block& block) {
    for (const char* tag : kOperatorTags) {
        gemmi::cif::Column column = block.find_values(tag);
        if (!column || column.length() == 0) {
            continue;
        }
        std::vector<gemmi::Op> operators{gemmi::Op::identity()};
        for (int i = 0; i < column.length(); ++i) {
            const std::string text = column.str(i);
            try {
                operators.push_back(gemmi::parse_triplet(text).wrap());
            } catch (const std::exception&) {
                fail("symmetry operator \"" + text + "\" (\"" + tag + "\") cannot be read");
            }
            if (operators.back().rot_type() == 0) {
                fail("symmetry operator \"" + text + "\" (\"" + tag +
                     "\") is not a rotation or rotoinversion of a lattice");
            }
        }
        gemmi::GroupOps group = gemmi::split_centering_vectors(operators);
        std::sort(group.cen_ops.begin(), group.cen_ops.end()); // the zero shift first
        group.cen_ops.erase(std::unique(group.cen_ops.begin(), group.cen_ops.end()),
                            group.cen_ops.end());
        if (group.cen_ops.empty() || group.cen_ops.front() != gemmi::Op::Tran{0, 0, 0}) {
            group.cen_ops.insert(group.cen_ops.begin(), gemmi::Op::Tran{0, 0, 0});
        }
        requireClosed(group, tag);
        crystal_.group = std::move(group);
        if (const gemmi::SpaceGroup* known = gemmi::find_spacegroup_by_ops(crystal_.group)) {
            crystal_.spaceGroup = known->xhm();
        } else {
            crystal_.notes.push_back("the symmetry operators (\"" + std::string(tag) +
                                     "\") are used as given; they match no tabulated setting");
            for (const char* nameTag : kNameTags) {
                if (crystal_.spaceGroup.empty()) {
                    crystal_.spaceGroup = value(block, nameTag);
                }
            }
        }
        crystal_.structure.spacegroup_hm = crystal_.spaceGroup;
        gemmi::UnitCell& cell = crystal_.structure.cell;
        cell.images.clear();
        for (const gemmi::Op& op : crystal_.group) {
            if (op != gemmi::Op::identity()) {
                cell.images.emplace_back(
                    gemmi::Transform{gemmi::rot_as_mat33(op), gemmi::tran_as_vec3(op)});
            }
        }
        cell.cs_count = static_cast<short>(cell.images.size());
        return true;
    }
    return false;
}

// A list that is not a group would make a pattern of nothing in particular; the largest
// space groups have 192 operations.
void CifCrystalReader::requireClosed(const gemmi::GroupOps& group, const char* tag) const {
    const std::vector<gemmi::Op> all = group.all_ops_sorted();
    bool closed = all.size() <= kMaxSpaceGroupOrder;
    for (std::size_t i = 0; closed && i < all.size(); ++i) {
        for (std::size_t j = 0; closed && j < all.size(); ++j) {
            closed = std::binary_search(all.begin(), all.end(), all[i] * all[j]);
        }
    }
    if (!closed) {
        fail("the symmetry operators (\"" + std::string(tag) + "\") do not form a space group");
    }
}

void CifCrystalReader::useGroup(const gemmi::SpaceGroup& group) {
    crystal_.group = group.operations();
    crystal_.spaceGroup = group.xhm();
    crystal_.structure.spacegroup_hm = crystal_.spaceGroup;
    crystal_.structure.cell.set_cell_images_from_spacegroup(&group);
}

void CifCrystalReader::readSites(gemmi::cif::Block& block) {
    for (const char* tag :
         {"_atom_site_label", kPositionTags[0], kPositionTags[1], kPositionTags[2]}) {
        if (!block.find_values(tag)) {
            fail("no atom sites: \"" + std::string(tag) + "\" is missing");
        }
    }
    std::vector<gemmi::SmallStructure::Site>& sites = crystal_.structure.sites;
    if (sites.empty()) {
        fail("no atom sites: the \"_atom_site_\" loop is empty");
    }
    for (gemmi::SmallStructure::Site& site : sites) {
        const std::array<double, 3> position{site.fract.x, site.fract.y, site.fract.z};
        for (std::size_t i = 0; i < 3; ++i) {
            if (!std::isfinite(position[i])) {
                fail("atom site \"" + site.label + "\": \"" + kPositionTags[i] +
                     "\" is not a number");
            }
        }
        if (site.element == gemmi::El::X) {
            site.element = elementOfLabel(site.label); // water oxygens typed "X" or "OW1"
        }
        if (site.element == gemmi::El::X || !gemmi::IT92<double>::has(site.element.elem)) {
            fail("atom site \"" + site.label +
                 "\": no known element in \"_atom_site_type_symbol\" \"" + site.type_symbol + "\"");
        }
        if (!std::isfinite(site.occ) || site.occ < 0.0) {
            fail("atom site \"" + site.label + "\": \"_atom_site_occupancy\" is not a fraction");
        }
        if (!std::isfinite(site.u_iso) || site.u_iso < 0.0) {
            site.u_iso = 0.0; // left to the default displacement
        }
    }
}

} // namespace

CifCrystal readCifCrystal(const std::filesystem::path& path) {
    CifCrystalReader reader(path);
    std::error_code statusError;
    if (!std::filesystem::is_regular_file(path, statusError)) {
        reader.fail("cannot be opened as a file");
    }
    try {
        gemmi::cif::Document document = gemmi::cif::read_file(path.string());
        if (document.blocks.empty()) {
            reader.fail("no data block (\"data_\") in the file");
        }
        for (gemmi::cif::Block& block : document.blocks) {
            if (block.find_value(kLengthTags[0]) != nullptr) {
                return reader.read(block);
            }
        }
        return reader.read(document.blocks.front());
    } catch (const QuarvexError&) {
        throw;
    } catch (const std::exception& error) {
        reader.fail(std::string("not a CIF that can be read: ") + error.what());
    }
}

} // namespace quarvex
