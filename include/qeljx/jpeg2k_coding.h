/* SPDX-License-Identifier: Apache-2.0 */
/* JPEG 2000 code-blocks: the embedded block coder of T.800 Annexes C and D. */
#ifndef QELJX_JPEG2K_CODING_H
#define QELJX_JPEG2K_CODING_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How a code-block is coded, and how it is to be decoded. The low five are those of COD and COC markers but for their
 * places (T.800 Table A.19): there bypass is 0x1, reset 0x2, termination 0x4, causal contexts 0x8, predictable
 * termination 0x10, segmentation symbols 0x20. */
typedef enum {
    JPEG2K_VERTICALLY_CAUSAL = 0x1,     /* contexts do not look into the stripe below (T.800 D.7) */
    JPEG2K_BYPASS = 0x2,                /* raw bits in the lower planes (D.6) */
    JPEG2K_TERMINATE_EVERY_PASS = 0x4,  /* every pass is a segment of its own (D.4.2) */
    JPEG2K_RESET_EVERY_PASS = 0x8,      /* contexts start anew with every pass (D.4.1) */
    JPEG2K_SEGMENTATION_SYMBOLS = 0x10, /* four symbols follow each cleanup pass (D.5) */
    JPEG2K_LOSSLESS = 0x20,             /* encoding: the lowest plane makes coefficients exact, for distortions */
    JPEG2K_CONCEAL_ERRORS = 0x10000,    /* decoding of whole blocks: hide what an error may have spoilt */
    JPEG2K_KEEP_DESTINATION = 0x20000,  /* the coefficients are not set to 0 first */
    JPEG2K_KEEP_LOW_BITS = 0x40000,     /* decoding of whole blocks: planes that are not there are not cleared */
    JPEG2K_KEEP_FLAGS = 0x80000,        /* what the buffer knows of significant samples is not cleared first */
    JPEG2K_PREDICTABLE_TERMINATION = 0x100000, /* decoding: the ends of segments tell of errors (D.4.2) */
    JPEG2K_LEAST_RATES = 0x200000              /* encoding: rates are not bounds, but the least numbers of bytes */
} QelCodeBlockStyle;

/* The decoder of one code-block, in the caller's buffer. */
typedef struct QelDecodeCBProgrState QelDecodeCBProgrState;

/* Bytes of the buffer for code-blocks of up to this size: round-up-to-32(4 * width + 8) * (ceil(height / 2) + 2) + 388,
 * 10180 for 64x64. The buffer may lie at any address, but stays there from Init on. Returns qelStsNullPtrErr if pSize
 * is null, qelStsSizeErr, with *pSize left alone, if a side is less than 1 or the bytes do not fit an int. */
QEL_API QelStatus qeliDecodeGetBufSize_JPEG2K(QelSize maxSize, int* pSize);

/* Decodes a code-block (T.800 D.1 to D.7) whose segments are all at hand.
 *
 * pSrc has the segments one after the other, pSegLengths their nSegments lengths in bytes; a byte after the end of a
 * segment counts as 0xFF, and none is read. pDst takes size.height rows of size.width coefficients, dstStep bytes
 * apart, each as sign and magnitude: bit 31 is 1 for a negative one, bit p of the others is magnitude bit plane p.
 * bandType is 0 for LL, 1 for LH (low-pass horizontally), 2 for HL, 3 for HH; any other is like 0 and 1. nBitPlanes is
 * the number of magnitude bit planes that are coded, the zero ones at the top not counted (Mb less those of the packet
 * header): the first pass is the cleanup pass of plane nBitPlanes - 1. Below 1 nothing is decoded; planes above 30 are,
 * but only signs and the half below plane 31 have a place in a coefficient. nPasses is the number of coding passes in
 * all segments; those below plane 0 are not decoded. style is a sum of QelCodeBlockStyle. Which passes a segment holds
 * follows from it: with JPEG2K_TERMINATE_EVERY_PASS each has one; else with JPEG2K_BYPASS the first segment ends with
 * the fourth plane (its first ten passes), and then segments with the raw significance propagation and refinement
 * passes of a plane and segments with its cleanup pass take turns; else there is one segment.
 *
 * A magnitude has its decoded bits, and below them a one: half of what is not known. Unless the style has
 * JPEG2K_KEEP_LOW_BITS, all bits below the current plane are cleared in the end. That is the plane p of the last pass,
 * so that the one goes; but a coefficient that has no bit of plane p yet keeps the one that stands there for it. Where
 * a cleanup pass ends a segment for another one to follow, so with every pass terminated after each cleanup pass, the
 * current plane is p - 1 already, and the one stays (see qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K).
 *
 * Checks, in this order: pSrc and pState (qelStsNullPtrErr), the size (qelStsSizeErr), pSegLengths and pDst
 * (qelStsNullPtrErr), dstStep below 1 (qelStsStepErr). Then qelStsNoErr; or, if a segmentation symbol or, with
 * JPEG2K_PREDICTABLE_TERMINATION, the end of a segment is wrong, qelStsJPEG2KCodeBlockIsFinished: the plane of that
 * pass goes to *pErrorBitPlane, which may be null and is otherwise not written, and the coefficients have what was
 * decoded up to and with that pass; with JPEG2K_CONCEAL_ERRORS they are cut off below that plane, which stays, as
 * qeliDecodeCBProgrConcealError_JPEG2K does. Where a style asks for both checks, that of the termination decides. It is
 * made after arithmetic coded passes that end their segment; where the first segment has several passes, only if these
 * go down to the last plane that it may have. All other damage goes unnoticed, and does no harm.
 *
 * Worked: the byte 0x00 with one plane and one pass, of a block of 1x1, decodes to 1. */
QEL_API QelStatus qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(const uint8_t* pSrc, int32_t* pDst, int dstStep, QelSize size,
                                                       int bandType, int nBitPlanes, int nPasses,
                                                       const uint32_t* pSegLengths, int nSegments, int style,
                                                       int* pErrorBitPlane, QelDecodeCBProgrState* pState);

/* The same, segment by segment: Init once for a buffer, Attach for each code-block, Step for each segment as it comes.
 * Meanwhile the coefficients are what has been decoded, and ClearLeastSfBits or ConcealError may end the block.
 *
 * Each returns qelStsNullPtrErr if pState is null, and all but Init qelStsContextMatchErr if Init has not been called.
 * Then Attach returns qelStsNullPtrErr for a null pDst, qelStsStepErr if dstStep is less than 1, qelStsSizeErr if a
 * side is; Step returns qelStsJPEG2KCodeBlockIsNotAttached before Attach, qelStsNullPtrErr for a null pSrc. */
QEL_API QelStatus qeliDecodeCBProgrInit_JPEG2K(QelDecodeCBProgrState* pState);
/* Size, bandType, nBitPlanes, nPasses and style as above. The size may be any for which the buffer suffices. */
QEL_API QelStatus qeliDecodeCBProgrAttach_JPEG2K_32s_C1R(int32_t* pDst, int dstStep, QelSize size, int bandType,
                                                         int nBitPlanes, int nPasses, int style,
                                                         QelDecodeCBProgrState* pState);
/* Decodes the next segment. With no passes left it does nothing. Returns qelStsJPEG2KCodeBlockIsFinished as above, then
 * also for all later segments. */
QEL_API QelStatus qeliDecodeCBProgrStep_JPEG2K(const uint8_t* pSrc, int segmentLength, QelDecodeCBProgrState* pState);
/* The plane of the last pass; before the first one nBitPlanes - 1, or -1 if there are no planes. Where a cleanup pass
 * ends its segment it is the next lower plane already: with JPEG2K_TERMINATE_EVERY_PASS after each of them; else with
 * JPEG2K_BYPASS after that of the fourth plane, or of the last if there are fewer, and after later ones if passes are
 * left. So after all planes it is -1, or 0 where no segment could follow; with more passes than planes can have, -1.
 * Returns qelStsNullPtrErr for a null pBitPlane. */
QEL_API QelStatus qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K(int* pBitPlane, QelDecodeCBProgrState* pState);
/* Of each coefficient the bits from the current plane up, those of that plane too, are kept; if its magnitude then is
 * not 0, the bit of that plane is set, and else the coefficient becomes 0. */
QEL_API QelStatus qeliDecodeCBProgrConcealError_JPEG2K(QelDecodeCBProgrState* pState);
/* Clears the bits of all coefficients below the current plane. */
QEL_API QelStatus qeliDecodeCBProgrClearLeastSfBits_JPEG2K(QelDecodeCBProgrState* pState);

/* The encoder of code-blocks, in memory of its own. */
typedef struct QelEncodeState QelEncodeState;

/* Makes an encoder for code-blocks of up to this size, some 320 KB for 64x64. It may encode any number of them, one
 * after the other. Returns qelStsNullPtrErr if ppState is null, qelStsSizeErr if a side is less than 1; *ppState is
 * left alone then. Returns qelStsMemAllocErr with *ppState null if there is not so much memory, or it would be more
 * than an int counts. */
QEL_API QelStatus qeliEncodeInitAlloc_JPEG2K(QelEncodeState** ppState, int maxWidth, int maxHeight);
/* Returns qelStsNullPtrErr if pState is null. */
QEL_API QelStatus qeliEncodeFree_JPEG2K(QelEncodeState* pState);

/* Encodes a code-block (T.800 D.1 to D.7), to be asked for by the functions below until the next one is loaded.
 *
 * pSrc has `height` rows of `width` coefficients, srcStep bytes apart, each as sign and magnitude: bit 31 is 1 for a
 * negative one. bandType is that of decoding. nBitPlanes says which planes of magnitude bits are coded: those from bit
 * 30 down to bit 31 - nBitPlanes, but for those at the top that are 0 throughout; none if it is less than 1. The bits
 * below count for distortions. `reserved` is not read. style is a sum of JPEG2K_VERTICALLY_CAUSAL, JPEG2K_BYPASS,
 * JPEG2K_TERMINATE_EVERY_PASS, JPEG2K_RESET_EVERY_PASS, JPEG2K_SEGMENTATION_SYMBOLS, JPEG2K_LOSSLESS and
 * JPEG2K_LEAST_RATES; other bits do not matter.
 *
 * terminationMethod is how arithmetic coded segments end: 0 with the flush of T.800 C.2.9, 1 with the fewest bytes that
 * decode to the same, 2 predictably (D.4.2). Raw segments always end predictably; if there is no bit left to fill,
 * their last byte may be 0xFF, which a file must not have at the end of a segment (D.6) and a decoder supplies: leave
 * it out.
 *
 * *pNumBitPlanes becomes the number of magnitude bits of the largest magnitude; *pNumPasses the number of coding
 * passes, three for each plane that is coded but the first, which has one; *pNumSegments the number of codeword
 * segments, 0 without a pass. A decoder that is told *pNumBitPlanes puts coefficients where they were; one that is told
 * as many less 31 - nBitPlanes puts the lowest plane at bit 0. If nBitPlanes is Mb of the band (T.800 E-2), packet
 * headers count 31 - *pNumBitPlanes zero bit planes.
 *
 * Returns, in this order: qelStsNullPtrErr for a null pState, qelStsContextMatchErr for one that InitAlloc has not
 * made, qelStsNullPtrErr for a null output, qelStsSizeErr if a side is less than 1, qelStsNullPtrErr for a null pSrc,
 * qelStsStepErr if srcStep is less than 1, qelStsBadArgErr for another terminationMethod or an nBitPlanes above 31,
 * qelStsSizeErr if a side is larger than InitAlloc was told. Then qelStsNoErr.
 *
 * Worked: a block of 1x1, whose only coefficient is 0x40000000, with nBitPlanes 1 has 31 bit planes and one pass. */
QEL_API QelStatus qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int width, int height,
                                                         QelEncodeState* pState, int bandType, int nBitPlanes,
                                                         int terminationMethod, int reserved, int style,
                                                         int* pNumBitPlanes, int* pNumPasses, int* pNumSegments);

/* What has been encoded. Each returns qelStsNullPtrErr for a null pState, qelStsContextMatchErr for one that InitAlloc
 * has not made, qelStsNullPtrErr for a null output, then qelStsJPEG2KBadPassNumber for an index outside 0 to the number
 * of passes or segments less 1; the output is left alone then. */

/* A number of bytes, from the first one of the block on, that decodes to all of this and the earlier passes; it never
 * decreases from one to the next.
 *
 * It counts what the coder has put out when the pass ends, and what its registers take at most: mostly two bytes more
 * than needed. So it may be up to four bytes beyond the end of the segment, or of the block: callers cut it off there.
 * When qeliEncodeStoreBits_JPEG2K_1u stores the byte that it ends with, and that is 0xFF, which decoders supply, it
 * becomes one less.
 *
 * With JPEG2K_LEAST_RATES it is at once the least that will do, but for the last pass of a segment, which gets all of
 * that; and it never ends with 0xFF. */
QEL_API QelStatus qeliEncodeGetRate_JPEG2K(const QelEncodeState* pState, int passIndex, uint32_t* pRate);
/* By how much the pass reduces the block's squared error (J.14.4): *pMantissa * 2^*pExponent, in units of the square of
 * the step of plane 31 - nBitPlanes. It may be negative. */
QEL_API QelStatus qeliEncodeGetDistReduction_JPEG2K(const QelEncodeState* pState, int passIndex, int* pMantissa,
                                                    int* pExponent);
/* The same for all passes up to this one. */
QEL_API QelStatus qeliEncodeGetDist_JPEG2K(const QelEncodeState* pState, int passIndex, double* pDist);
/* The bytes of a segment. With JPEG2K_TERMINATE_EVERY_PASS each pass is one; else with JPEG2K_BYPASS a segment begins
 * wherever raw passes begin or end; else there is one. */
QEL_API QelStatus qeliEncodeGetTermPassLen_JPEG2K(const QelEncodeState* pState, int segmentIndex, uint32_t* pLength);

/* Stores the next bytes of the block, segment after segment, in as many calls as wanted. *pDstLen is the room at pDst,
 * and becomes the number of bytes that are stored there; *pIsNotLast becomes 1 if there are more, else 0. Without a
 * pass, or when all is stored, that is 0 bytes.
 *
 * Returns qelStsNullPtrErr for a null pState, qelStsContextMatchErr for one that InitAlloc has not made,
 * qelStsNullPtrErr for another null pointer, qelStsSizeErr if *pDstLen is less than 1, else qelStsNoErr. */
QEL_API QelStatus qeliEncodeStoreBits_JPEG2K_1u(uint8_t* pDst, int* pDstLen, QelEncodeState* pState, int* pIsNotLast);

#ifdef __cplusplus
}
#endif

#endif
