// SPDX-License-Identifier: Apache-2.0
// The differences of a lossless scan (T.81 H.1), row by row from the picture.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "codec/base/library.h"
#include "codec/base/picture.h"
#include "codec/jpeg/encode/scan_writer.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

class Differences {
public:
    Differences(const Picture& picture, const ScanLayout& layout, const ScanHeader& scan, int restartInterval)
        : picture_(picture), scan_(scan), rowsPerInterval_(restartInterval / layout.mcusAcross)
    {
        auto row = [&] { return std::vector<int16_t>(layout.mcusAcross); };
        for (const ScanShare& share : layout.shares) components_.push_back({share.component, row(), row(), row()});
        for (Component& c : components_) rows_.push_back(c.differences.data());
    }

    // Hands all rows to ScanStatistics or a ScanEncoder.
    template <class Coder> void code(Coder& coder, Progress& progress)
    {
        for (int y = 0; y < picture_.height(); ++y) {
            bool isFirst = rowsPerInterval_ ? y % rowsPerInterval_ == 0 : y == 0;
            coder.startRow();
            if (isFirst && y > 0) coder.restart();
            predict(y, isFirst);
            coder.differences(rows_, picture_.width());
            progress.step();
        }
        coder.finish();
    }

private:
    struct Component {
        int channel;
        std::vector<int16_t> samples, above, differences;
    };

    void predict(int y, bool isFirst)
    {
        for (Component& c : components_) {
            std::swap(c.above, c.samples);
            int16_t *samples = c.samples.data(), *differences = c.differences.data();
            int width = picture_.width(), pt = scan_.pointTransform;
            if (picture_.bytesPerSample() == 1)
                takeRow(picture_.row(y) + c.channel, samples);
            else
                takeRow(picture_.row<uint16_t>(y) + c.channel, samples);
            check(isFirst ? qeliDiffPredFirstRow_JPEG_16s_C1(samples, differences, width, picture_.precision(), pt)
                          : qeliDiffPredRow_JPEG_16s_C1(samples, c.above.data(), differences, width, scan_.predictor));
        }
    }

    template <class T> void takeRow(const T* in, int16_t* samples) const
    {
        int step = picture_.channels();
        for (int x = 0; x < picture_.width(); ++x)
            samples[x] = int16_t(in[ptrdiff_t(x) * step] >> scan_.pointTransform);
    }

    const Picture& picture_;
    const ScanHeader& scan_;
    int rowsPerInterval_;
    std::vector<Component> components_;
    std::vector<const int16_t*> rows_;
};

}
