/*
 * The dynamic range of an HDR buffer in shared-exponent form.
 */
#include <LumenforgeMetaLib.h>
#include <math.h>

enum { kWidth = 4, kHeight = 2 };

int main(void) {
  /* A row holds its red, its green, its blue mantissas, and then its exponents. */
  static const unsigned char data[kHeight][4][kWidth] = {
      {{128, 128, 200, 0}, {128, 128, 180, 0}, {128, 128, 160, 0}, {129, 121, 140, 0}},
      {{255, 64, 32, 16}, {255, 64, 32, 16}, {255, 64, 32, 16}, {128, 128, 128, 128}}};
  float result[3];
  if (hdrMinMax(kWidth, kHeight, data[0][0], result) < 0) return 1;
  printf("from %g to %g, mean %g: %.1f stops\n", (double)result[0], (double)result[1],
         (double)result[2], log2((double)result[1] / (double)result[0]));
  return 0;
}
