/* SPDX-License-Identifier: Apache-2.0 */
/* Colours of a big picture, with as many threads as you allow. Conversions of planes split regions of millions of
 * pixels over OpenMP's threads, whose number is the calling thread's own affair; the result is the same for all. cc
 * -fopenmp threads.c $(pkg-config --cflags --libs qeljx) -o threads threads [megapixels]
 */
#include "common.h"

#include <omp.h>
#include <string.h>

enum { kWidth = 4000 };

static double fastestOf5(const uint8_t* rgb, uint8_t* const planes[3], QelSize size)
{
    double fastest = 1e9;
    for (int i = 0; i < 5; ++i) {
        double start = omp_get_wtime();
        check(qeliRGBToYCbCr_JPEG_8u_C3P3R(rgb, 3 * size.width, planes, size.width, size));
        double time = omp_get_wtime() - start;
        if (time < fastest) fastest = time;
    }
    return fastest;
}

int main(int argc, char** argv)
{
    QelSize size = {kWidth, (argc > 1 ? atoi(argv[1]) : 24) * (1000000 / kWidth)};
    if (size.height < 1 || size.height > 100000) fail("usage: threads [megapixels, 1 to 400]");
    size_t pixels = (size_t)size.width * size.height;
    uint8_t *rgb = take(3 * pixels), *first = take(3 * pixels), *planes[3];
    uint32_t random = 1;
    for (size_t i = 0; i < 3 * pixels; ++i) rgb[i] = (uint8_t)((random = random * 1664525 + 1013904223) >> 24);
    for (int c = 0; c < 3; ++c) planes[c] = take(pixels);

    for (int threads = 1, most = omp_get_max_threads(); threads <= most; ++threads) {
        omp_set_num_threads(threads); /* holds for the calls of this thread; OMP_NUM_THREADS for the whole program */
        double seconds = fastestOf5(rgb, planes, size);
        for (int c = 0; c < 3; ++c) {
            if (threads == 1) memcpy(first + c * pixels, planes[c], pixels);
            if (memcmp(first + c * pixels, planes[c], pixels) != 0) fail("the number of threads changes the result");
        }
        printf("threads: %d, megapixels a second: %.0f, planes: the same\n", threads, (double)pixels / seconds * 1e-6);
    }
    /* A program with threads of its own has each of them call omp_set_num_threads(1) once. */
    for (int c = 0; c < 3; ++c) free(planes[c]);
    free(first), free(rgb);
    return 0;
}
