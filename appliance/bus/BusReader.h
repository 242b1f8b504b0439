// Reads a message of the bare bus that anybody may have sent.
#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "Message.h"

namespace Appliance {

// Reads the arguments one after the other, and no more of them than somebody can look at: what is too much is
// cut, and ends with "…". The message outlives it. An argument that is not there reads as empty.
class BusReader {
  public:
    static constexpr std::size_t MostExtras = 100;
    static constexpr std::size_t MostElements = 100;  // of one list
    static constexpr std::size_t MostBytes = 65536;   // of the texts together, those of keys included

    explicit BusReader(sd_bus_message* message) : message_(message) {}

    std::string text();           // s; alone at most Appliance::BytesKept
    TextList list();              // as
    std::string signedText();     // i, in decimal
    std::uint32_t number();       // u
    std::int32_t signedNumber();  // i
    // a{sv}. A value that is neither a text nor a text list is a text that tells its type.
    Extras extras();

  private:
    std::string charged(std::string text);
    void readEntry(Extras& extras);

    sd_bus_message* message_;
    std::size_t left_ = MostBytes;
};

}  // namespace Appliance
