// A program built elsewhere against an installed BSCommonLibrary: it includes
// the installed headers, links the installed library and checks that the
// parameter path and a frame codec work across the library boundary.
#include "CommonParaAdapter.h"
#include "CommonUtils.h"

#include <cstdio>
#include <cstring>
#include <string>

int main()
{
    int failures = 0;
    auto check = [&failures](bool ok, const char* what) {
        if (!ok) {
            std::fprintf(stderr, "consumer: %s\n", what);
            ++failures;
        }
    };

    // A bus message: a 16-byte header, then the JSON body.
    const std::string body = R"({"PARAMETER":{"MDVR":{"TIMEP":{"TIMEZ":"GMT+08","TIMEOFFSET":480}}}})";
    std::string message(16, '\0');
    const unsigned int length = static_cast<unsigned int>(body.size());
    std::memcpy(&message[12], &length, 4);
    message += body;

    Json::Value root;
    check(ParseJsonMessage(message.data(), static_cast<int>(message.size()), root) == 1, "message parsed");
    tag_MsgTimeSetting time;
    std::memset(&time, 0xA5, sizeof time);
    check(AdaptParaJson(PARA_TIME_SETTING, root, &time) == 0, "time section adapted");
    check(std::strncmp(time.TIMEZ, "GMT+08", sizeof time.TIMEZ) == 0, "time zone read");
    check(time.TIMEOFFSET == 480, "offset read");
    check(AdaptParaJson(static_cast<_PARA_TYPE_>(61), root, &time) == -1, "invalid type refused");

    const char frame[] = {0x7E, 0x01, 0x7E, 0x02, 0x7D, 0x7E};
    char escaped[2 * sizeof frame];
    char decoded[sizeof escaped];
    int remain = -1;
    const int escapedLength = serial_transfrom_7e7e(frame, escaped, sizeof frame);
    check(escapedLength == 8, "frame escaped");
    check(serial_retransfrom_7e7e(escaped, decoded, escapedLength, &remain) == 6 && remain == 0 &&
              std::memcmp(decoded, frame, sizeof frame) == 0,
          "frame restored");

    if (failures == 0)
        std::printf("consumer: ok (tag_MsgTimeSetting is %zu bytes)\n", sizeof time);
    return failures == 0 ? 0 : 1;
}
