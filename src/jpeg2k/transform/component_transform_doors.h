// SPDX-License-Identifier: Apache-2.0
// Component transforms: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include "core/exports.h"
#include "jpeg2k/transform/component_transform.h"

QEL_KERNEL qel::ReversibleTransform::InPlace ownqj_RCTFwd_JPEG2K_32s_P3IR, ownqj_RCTInv_JPEG2K_32s_P3IR;
QEL_KERNEL qel::ReversibleTransform::ToPlanes ownqj_RCTFwd_JPEG2K_32s_C3P3R;
QEL_KERNEL qel::ReversibleTransform::ToPixels ownqj_RCTInv_JPEG2K_32s_P3C3R;
QEL_KERNEL qel::IrreversibleTransform::InPlace ownqj_ICTFwd_JPEG2K_32f_P3IR, ownqj_ICTInv_JPEG2K_32f_P3IR;
QEL_KERNEL qel::IrreversibleTransform::ToPlanes ownqj_ICTFwd_JPEG2K_32f_C3P3R;
QEL_KERNEL qel::IrreversibleTransform::ToPixels ownqj_ICTInv_JPEG2K_32f_P3C3R;
