#include "specdata/SpectrumRecords.h"

#include <algorithm>

namespace quarvex {

SpectrumRecord spectrumRecord(const SPECDATA_GLOBALS& specdata, int index) {
    const auto k = static_cast<std::size_t>(index);
    SpectrumRecord record;
    record.name = specdata.NAME[k];
    record.path = specdata.PATH[k];
    const auto x = specdata.xValues(index);
    const auto y = specdata.yValues(index);
    record.x.assign(x.begin(), x.end());
    record.y.assign(y.begin(), y.end());
    record.dtype = specdata.DTYPE[k];
    record.waveInfo = specdata.WAVE_INFO[k];
    record.header = specdata.HEADER[k];
    record.comments = specdata.COMMENTS[k];
    return record;
}

void replaceSpectrum(SPECDATA_GLOBALS& specdata, int index, const SpectrumRecord& record) {
    const int points = static_cast<int>(record.x.size());
    if (points > specdata.pointDimension) {
        EXCHANGE_DATA_ARRAYS(specdata, 1);
        ALLOCATE_SPECDATA_ARRAYS(specdata, specdata.count(), points);
        EXCHANGE_DATA_ARRAYS(specdata, 2);
    }
    const auto k = static_cast<std::size_t>(index);
    specdata.NUMDATA[k] = points;
    std::copy(record.x.begin(), record.x.end(), specdata.xColumn(index).begin());
    std::copy(record.y.begin(), record.y.end(), specdata.yColumn(index).begin());
    const auto [low, high] = std::minmax_element(record.y.begin(), record.y.end());
    specdata.Y_EXTREMES[k] =
        points > 0 ? std::array<float, 2>{*low, *high} : std::array<float, 2>{0.0F, 0.0F};
    specdata.DTYPE[k] = record.dtype;
    specdata.WAVE_INFO[k] = record.waveInfo;
    specdata.HEADER[k] = record.header;
    specdata.COMMENTS[k] = record.comments;
}

} // namespace quarvex
