/* SPDX-License-Identifier: Apache-2.0 */
/* The name of a status, and a sentence about it, for messages. Not part of qeljx.h: include it where you want it. */
#ifndef QELJX_STATUS_H
#define QELJX_STATUS_H

#include "types.h"

/* "qelStsNullPtrErr" for qelStsNullPtrErr; "unknown status" for what is none. */
static inline const char* qelStatusName(QelStatus status)
{
    switch (status) {
    case qelStsNoErr:
        return "qelStsNoErr";
    case qelStsDivByZero:
        return "qelStsDivByZero";
    case qelStsJPEGMarkerWarn:
        return "qelStsJPEGMarkerWarn";
    case qelStsJPEGCoeffPosErr:
        return "qelStsJPEGCoeffPosErr";
    case qelStsBadArgErr:
        return "qelStsBadArgErr";
    case qelStsSizeErr:
        return "qelStsSizeErr";
    case qelStsOutOfRangeErr:
        return "qelStsOutOfRangeErr";
    case qelStsNullPtrErr:
        return "qelStsNullPtrErr";
    case qelStsMemAllocErr:
        return "qelStsMemAllocErr";
    case qelStsStepErr:
        return "qelStsStepErr";
    case qelStsContextMatchErr:
        return "qelStsContextMatchErr";
    case qelStsJPEGOutOfBufErr:
        return "qelStsJPEGOutOfBufErr";
    case qelStsJPEGHuffTableErr:
        return "qelStsJPEGHuffTableErr";
    case qelStsJPEGHuffSpecErr:
        return "qelStsJPEGHuffSpecErr";
    case qelStsJPEG2KCodeBlockIsFinished:
        return "qelStsJPEG2KCodeBlockIsFinished";
    case qelStsJPEG2KBadPassNumber:
        return "qelStsJPEG2KBadPassNumber";
    case qelStsJPEG2KCodeBlockIsNotAttached:
        return "qelStsJPEG2KCodeBlockIsNotAttached";
    }
    return "unknown status";
}

/* One sentence, in English, without a full stop: "a pointer is null" for qelStsNullPtrErr. */
static inline const char* qelStatusText(QelStatus status)
{
    switch (status) {
    case qelStsNoErr:
        return "success";
    case qelStsDivByZero:
        return "a divisor was zero, and its quotient became the largest value";
    case qelStsJPEGMarkerWarn:
        return "a marker was met while bits were read";
    case qelStsJPEGCoeffPosErr:
        return "a run of zeros leads past the last coefficient of a block";
    case qelStsBadArgErr:
        return "an argument lies outside its allowed values";
    case qelStsSizeErr:
        return "a width, height or length is less than 1 or too large";
    case qelStsOutOfRangeErr:
        return "a value needs more than 16 magnitude bits";
    case qelStsNullPtrErr:
        return "a pointer is null";
    case qelStsMemAllocErr:
        return "there is not enough memory";
    case qelStsStepErr:
        return "a row step is less than 1";
    case qelStsContextMatchErr:
        return "a state object was not initialised";
    case qelStsJPEGOutOfBufErr:
        return "the stream ended too soon, or the output buffer is full";
    case qelStsJPEGHuffTableErr:
        return "a Huffman code or a value lies outside the table";
    case qelStsJPEGHuffSpecErr:
        return "the lists give no valid Huffman table, or a symbol has no code";
    case qelStsJPEG2KCodeBlockIsFinished:
        return "the code-block is damaged, as one of its error checks tells";
    case qelStsJPEG2KBadPassNumber:
        return "there is no coding pass or segment of this number";
    case qelStsJPEG2KCodeBlockIsNotAttached:
        return "a step was asked for before a code-block was attached";
    }
    return "no status of this library";
}

#endif
