/* A host program built against an installed orvcc. */
#include <orvcc.h>
#include <orvcore.h>
#include <stdio.h>

int main(void)
{
    const OrvLibVersion* v = orvccGetLibVersion();
    const Orv8u rgb[6] = {255, 255, 255, 0, 0, 0};
    Orv8u gray[2] = {1, 1};
    RoiSize roi = {2, 1};
    orvSetNumThreads(2);
    OrvStatus st = orviRGBToGray_8u_C3C1R(rgb, 6, gray, 2, roi);
    printf("%s %s: status %d, gray %d %d\n", v->libraryName, v->versionText, st, gray[0], gray[1]);
    return (st == orvStatusOk && gray[0] == 255 && gray[1] == 0) ? 0 : 1;
}
