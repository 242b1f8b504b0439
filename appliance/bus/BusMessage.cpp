#include "BusMessage.h"

namespace Appliance {

const char* nameOf(BusMessage::Kind kind)
{
    switch (kind) {
        case BusMessage::Kind::Launch:
            return "launch";
        case BusMessage::Kind::Reply:
            return "reply";
        case BusMessage::Kind::Refusal:
            return "refusal";
        case BusMessage::Kind::Voice:
            break;
    }
    return "voice";
}

}  // namespace Appliance
