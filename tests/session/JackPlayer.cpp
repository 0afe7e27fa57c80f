// SPDX-License-Identifier: GPL-3.0-or-later
// A DJ program as JACK knows one: it plays the ramp into four outputs, main on 1 and 2 and cue on 3 and 4, and connects
// them itself. Its arguments are the ports that they go to.
#include "platform/rig/RampSignal.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include <jack/jack.h>
#include <unistd.h>

namespace {

constexpr std::size_t outputs = 4;

struct Player {
    std::array<jack_port_t*, outputs> ports{};
    std::int64_t position = 0;
};

int process(jack_nframes_t frames, void* data)
{
    auto& player = *static_cast<Player*>(data);
    std::array<float*, outputs> channels{};
    for (std::size_t index = 0; index < outputs; ++index) {
        channels[index] = static_cast<float*>(jack_port_get_buffer(player.ports[index], frames));
        if (channels[index] == nullptr) {
            return 0;
        }
    }
    vantiro::RampSignal::render(channels, static_cast<int>(frames), player.position);
    player.position += frames;
    return 0;
}

}  // namespace

int main(int count, char** targets)
{
    static Player player;
    jack_client_t* client = jack_client_open("Jack Player", JackNoStartServer, nullptr);
    if (client == nullptr || count != static_cast<int>(outputs) + 1) {
        std::fputs("no JACK server, or not four ports to play to\n", stderr);
        return 1;
    }
    for (std::size_t index = 0; index < outputs; ++index) {
        const std::string name = (index < 2 ? "main_" : "cue_") + std::to_string(index % 2 + 1);
        player.ports[index] = jack_port_register(client, name.c_str(), JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
    }
    jack_set_process_callback(client, process, &player);
    if (jack_activate(client) != 0) {
        return 1;
    }
    for (std::size_t index = 0; index < outputs; ++index) {
        if (jack_connect(client, jack_port_name(player.ports[index]), targets[index + 1]) != 0) {
            std::fprintf(stderr, "no port %s\n", targets[index + 1]);
            return 1;
        }
    }
    std::puts("playing");
    std::fflush(stdout);
    for (;;) {
        ::pause();
    }
}
