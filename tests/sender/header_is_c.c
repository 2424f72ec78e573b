#include "sender/Quillolib_send.h"

int sender_header_is_c(void);
int sender_header_is_c(void)
{
    SenderVideoFrame const frame = {.width = 8, .height = 8, .fourCC = SenderFourCC_BGRX};
    return frame.width * frame.height + (int)sizeof(SenderSettings) + (int)sizeof(SenderAudioFrame);
}
