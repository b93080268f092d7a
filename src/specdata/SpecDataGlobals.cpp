#include "specdata/SpecDataGlobals.h"

#include <algorithm>
#include <cstddef>

namespace quarvex {

namespace {

// Calls f(main, spare) for every per-spectrum array, i.e. every field but X and Y.
template <class F> void forEachPerSpectrumField(SPECDATA_GLOBALS& s, F&& f) {
    f(s.NAME, s.DATA_NAME2);
    f(s.PATH, s.DATA_PATH2);
    f(s.NUMDATA, s.DATA_NUMDATA2);
    f(s.Y_EXTREMES, s.DATA_Y_EXTREMES2);
    f(s.DTYPE, s.DATA_DTYPE2);
    f(s.WAVE_INFO, s.DATA_WAVE_INFO2);
    f(s.SCALE_FACT, s.DATA_SCALE_FACT2);
    f(s.STACK_BUFF, s.DATA_STACK_BUFF2);
    f(s.ABS_SCALE, s.DATA_ABS_SCALE2);
    f(s.ACTIVE, s.DATA_ACTIVE2);
    f(s.VISIBLE, s.DATA_VISIBLE2);
    f(s.HEADER, s.DATA_HEADER2);
    f(s.COMMENTS, s.DATA_COMMENTS2);
}

template <class T> void release(std::vector<T>& values) {
    std::vector<T>().swap(values);
}

std::size_t offsetOf(int index, int pointDimension) {
    return static_cast<std::size_t>(index) * static_cast<std::size_t>(pointDimension);
}

// Copies the first `rows` values of each of `columns` columns between two column-major arrays.
void copyColumns(const std::vector<float>& from, int fromRows, std::vector<float>& to, int toRows,
                 int columns, int rows) {
    for (int k = 0; k < columns; ++k) {
        std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(offsetOf(k, fromRows)), rows,
                    to.begin() + static_cast<std::ptrdiff_t>(offsetOf(k, toRows)));
    }
}

} // namespace

std::span<const float> SPECDATA_GLOBALS::column(const std::vector<float>& values, int index) const {
    return {values.data() + offsetOf(index, pointDimension),
            static_cast<std::size_t>(NUMDATA[static_cast<std::size_t>(index)])};
}

std::span<float> SPECDATA_GLOBALS::mutableColumn(std::vector<float>& values, int index) {
    return {values.data() + offsetOf(index, pointDimension),
            static_cast<std::size_t>(NUMDATA[static_cast<std::size_t>(index)])};
}

void ALLOCATE_SPECDATA_ARRAYS(SPECDATA_GLOBALS& specdata, int spectra, int points) {
    const auto count = static_cast<std::size_t>(spectra);
    forEachPerSpectrumField(specdata, [count](auto& main, auto&) {
        release(main);
        main.resize(count);
    });
    release(specdata.X);
    release(specdata.Y);
    specdata.X.resize(offsetOf(spectra, points));
    specdata.Y.resize(offsetOf(spectra, points));
    specdata.pointDimension = points;
}

void EXCHANGE_DATA_ARRAYS(SPECDATA_GLOBALS& specdata, int mode) {
    if (mode == 1) {
        forEachPerSpectrumField(specdata, [](auto& main, auto& spare) { spare = main; });
        specdata.DATA_X2 = specdata.X;
        specdata.DATA_Y2 = specdata.Y;
        specdata.DATA_pointDimension2 = specdata.pointDimension;
        return;
    }
    const int spectra = std::min(static_cast<int>(specdata.DATA_NUMDATA2.size()), specdata.count());
    forEachPerSpectrumField(specdata, [spectra](auto& main, auto& spare) {
        std::copy_n(spare.begin(), spectra, main.begin());
        release(spare);
    });
    const int rows = std::min(specdata.DATA_pointDimension2, specdata.pointDimension);
    copyColumns(specdata.DATA_X2, specdata.DATA_pointDimension2, specdata.X,
                specdata.pointDimension, spectra, rows);
    copyColumns(specdata.DATA_Y2, specdata.DATA_pointDimension2, specdata.Y,
                specdata.pointDimension, spectra, rows);
    release(specdata.DATA_X2);
    release(specdata.DATA_Y2);
    specdata.DATA_pointDimension2 = 0;
}

void DELETE_SPECDATA_FILE(SPECDATA_GLOBALS& specdata, int index) {
    const int spectra = specdata.count();
    if (index < 0 || index >= spectra) {
        return;
    }
    int newDimension = 0;
    for (int k = 0; k < spectra; ++k) {
        if (k != index) {
            newDimension = std::max(newDimension, specdata.NUMDATA[static_cast<std::size_t>(k)]);
        }
    }
    auto rebuild = [&](std::vector<float>& values) {
        std::vector<float> kept(offsetOf(spectra - 1, newDimension));
        int to = 0;
        for (int k = 0; k < spectra; ++k) {
            if (k == index) {
                continue;
            }
            std::copy_n(values.begin() +
                            static_cast<std::ptrdiff_t>(offsetOf(k, specdata.pointDimension)),
                        newDimension,
                        kept.begin() + static_cast<std::ptrdiff_t>(offsetOf(to, newDimension)));
            ++to;
        }
        values.swap(kept);
    };
    rebuild(specdata.X);
    rebuild(specdata.Y);
    specdata.pointDimension = newDimension;
    forEachPerSpectrumField(specdata,
                            [index](auto& main, auto&) { main.erase(main.begin() + index); });
}

void FREE_SPECDATA_POINTERS(SPECDATA_GLOBALS& specdata) {
    specdata = SPECDATA_GLOBALS{};
}

int appendSpectrum(SPECDATA_GLOBALS& specdata, SpectrumRecord record) {
    const int spectra = specdata.count();
    const int points = static_cast<int>(record.x.size());
    EXCHANGE_DATA_ARRAYS(specdata, 1);
    ALLOCATE_SPECDATA_ARRAYS(specdata, spectra + 1, std::max(specdata.pointDimension, points));
    EXCHANGE_DATA_ARRAYS(specdata, 2);

    const auto k = static_cast<std::size_t>(spectra);
    std::copy(record.x.begin(), record.x.end(),
              specdata.X.begin() +
                  static_cast<std::ptrdiff_t>(offsetOf(spectra, specdata.pointDimension)));
    std::copy(record.y.begin(), record.y.end(),
              specdata.Y.begin() +
                  static_cast<std::ptrdiff_t>(offsetOf(spectra, specdata.pointDimension)));
    specdata.NUMDATA[k] = points;
    const auto [low, high] = std::minmax_element(record.y.begin(), record.y.end());
    specdata.Y_EXTREMES[k] =
        points > 0 ? std::array<float, 2>{*low, *high} : std::array<float, 2>{0.0F, 0.0F};
    specdata.NAME[k] = std::move(record.name);
    specdata.PATH[k] = std::move(record.path);
    specdata.DTYPE[k] = std::move(record.dtype);
    specdata.WAVE_INFO[k] = std::move(record.waveInfo);
    specdata.HEADER[k] = std::move(record.header);
    specdata.COMMENTS[k] = std::move(record.comments);
    specdata.SCALE_FACT[k] = 1.0F;
    specdata.STACK_BUFF[k] = 0.0F;
    specdata.ABS_SCALE[k] = 0.0F;
    std::fill(specdata.ACTIVE.begin(), specdata.ACTIVE.end(), false);
    specdata.ACTIVE[k] = true;
    specdata.VISIBLE[k] = true;
    return spectra;
}

} // namespace quarvex
