// SPDX-License-Identifier: Apache-2.0
// What a picture is like without its samples: it may be one that no memory holds.
#pragma once

#include "codec/base/picture.h"

namespace qel::codec {

class PictureForm {
public:
    PictureForm(int width, int height, ColourSpace space, int precision, bool hasAlpha = false, bool isSigned = false)
        : width_(width), height_(height), precision_(precision), space_(space), hasAlpha_(hasAlpha), isSigned_(isSigned)
    {}
    PictureForm(const Picture& picture) // that of the picture
        : PictureForm(picture.width(), picture.height(), picture.space(), picture.precision(), picture.hasAlpha(),
                      picture.isSigned())
    {}
    PictureForm withHeight(int height) const
    {
        PictureForm made = *this;
        made.height_ = height;
        return made;
    }

    int width() const { return width_; }
    int height() const { return height_; }
    ColourSpace space() const { return space_; }
    int channels() const { return channelsOf(space_) + hasAlpha_; }
    bool hasAlpha() const { return hasAlpha_; }
    bool isSigned() const { return isSigned_; }
    int precision() const { return precision_; }

    bool operator==(const PictureForm&) const = default;

private:
    int width_, height_, precision_;
    ColourSpace space_;
    bool hasAlpha_, isSigned_;
};

}
