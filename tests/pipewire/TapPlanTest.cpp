// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/TapPlan.h"

#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    using Wanted = std::set<std::pair<std::uint32_t, std::size_t>>;  ///< Output port, channel of ours.

    /// A graph made by hand. A port's id is its node's, times 100, and its index.
    class Graph : public GraphSnapshot {
    public:
        Graph() { connected = true; }

        std::uint32_t client(qint64 process, const GraphProperties& more = {})
        {
            GraphClient& client = clients.emplace_back();
            client.id = nextId();
            client.properties = {{u"pipewire.sec.pid"_s, QString::number(process)}};
            client.properties.insert(more);
            return client.id;
        }

        std::uint32_t stream(std::uint32_t client, int outputs, const GraphProperties& more = {})
        {
            const std::uint32_t id = node(u"Stream/Output/Audio"_s, 0, outputs, more);
            nodes.back().properties.insert(u"client.id"_s, QString::number(client));
            return id;
        }

        std::uint32_t sink(int inputs) { return node(u"Audio/Sink"_s, inputs, 0); }

        std::uint32_t node(const QString& mediaClass, int inputs, int outputs, const GraphProperties& more = {})
        {
            GraphNode& made = nodes.emplace_back();
            made.id = nextId();
            made.serial = made.id + 1000;
            made.running = true;
            made.properties = {{u"media.class"_s, mediaClass}, {u"node.name"_s, u"node"_s}};
            made.properties.insert(more);
            for (int index = 0; index < inputs + outputs; ++index) {
                const bool isInput = index < inputs;
                const auto place = static_cast<std::uint32_t>(isInput ? index : index - inputs);
                ports.push_back({.id = made.id * 100 + place + (isInput ? 50 : 0),
                    .node = made.id,
                    .index = place,
                    .isInput = isInput,
                    .isAudio = true});
            }
            return made.id;
        }

        void link(std::uint32_t from, std::uint32_t output, std::uint32_t to, std::uint32_t input)
        {
            links.push_back({.id = nextId(),
                .outputNode = from,
                .outputPort = from * 100 + output,
                .inputNode = to,
                .inputPort = to * 100 + 50 + input});
        }

        void linkAcross(std::uint32_t from, std::uint32_t to, std::uint32_t count)
        {
            for (std::uint32_t index = 0; index < count; ++index) {
                link(from, index, to, index);
            }
        }

        void unlink(std::uint32_t from)
        {
            std::erase_if(links, [&](const GraphLink& link) { return link.outputNode == from; });
        }

    private:
        std::uint32_t nextId() { return ++m_lastId; }

        std::uint32_t m_lastId = 10;
    };

    Wanted wanted(const TapPlan& plan, const Graph& graph)
    {
        Wanted found;
        for (const LinkPlan::Entry& entry : plan.entries(graph)) {
            EXPECT_TRUE(found.emplace(entry.outputPort, entry.channel).second) << "twice: " << entry.outputPort;
        }
        return found;
    }

}  // namespace

class TapPlanTest : public SandboxTest {
protected:
    ProgramIdentity onlyProgram()
    {
        const auto programs = m_programs->programs(m_graph);
        EXPECT_EQ(programs.size(), 1U);
        return programs.empty() ? ProgramIdentity{} : programs.front().identity;
    }

    TapPlan plan(std::size_t channels) { return {m_programs, onlyProgram(), channels}; }

    void waitUntilSettled() { std::this_thread::sleep_for(450ms); }

    Graph m_graph;
    std::uint32_t m_client = m_graph.client(::getpid());
    std::shared_ptr<ProgramList> m_programs = std::make_shared<ProgramList>();
};

TEST_F(TapPlanTest, MirrorsTheLinksToADevice)
{
    struct Row {
        const char* name;
        int outputs;
        int inputs;
        std::vector<std::pair<std::uint32_t, std::uint32_t>> links;  ///< From output to input.
        std::size_t channels;
        std::vector<std::pair<std::uint32_t, std::size_t>> expected;  ///< From output to channel of ours.
    };
    for (const Row& row : std::vector<Row>{
             {"stereo", 2, 2, {{0, 0}, {1, 1}}, 2, {{0, 0}, {1, 1}}},
             {"crossed", 2, 2, {{0, 1}, {1, 0}}, 2, {{0, 1}, {1, 0}}},
             {"mono to both", 1, 2, {{0, 0}, {0, 1}}, 2, {{0, 0}, {0, 1}}},
             {"one side only", 2, 2, {{1, 1}}, 2, {{1, 1}}},
             {"a mono device feeds both", 2, 1, {{0, 0}, {1, 0}}, 2, {{0, 0}, {0, 1}, {1, 0}, {1, 1}}},
             {"a mono device by itself", 1, 1, {{0, 0}}, 1, {{0, 0}}},
             {"four of eight", 4, 8, {{0, 0}, {1, 1}, {2, 4}, {3, 5}}, 8, {{0, 0}, {1, 1}, {2, 4}, {3, 5}}},
             {"more than a mixdown has", 4, 8, {{0, 0}, {1, 1}, {2, 2}, {3, 3}}, 2, {{0, 0}, {1, 1}}},
         }) {
        SCOPED_TRACE(row.name);
        m_graph = Graph();
        m_programs = std::make_shared<ProgramList>();
        const std::uint32_t client = m_graph.client(::getpid());
        const std::uint32_t stream = m_graph.stream(client, row.outputs);
        const std::uint32_t sink = m_graph.sink(row.inputs);
        for (const auto& [from, to] : row.links) {
            m_graph.link(stream, from, sink, to);
        }
        Wanted expected;
        for (const auto& [from, to] : row.expected) {
            expected.emplace(stream * 100 + from, to);
        }
        EXPECT_EQ(wanted(plan(row.channels), m_graph), expected);
    }
}

TEST_F(TapPlanTest, SumsTheStreamsOfOneProgramAndLeavesAllOthersOut)
{
    const std::uint32_t first = m_graph.stream(m_client, 2);
    const std::uint32_t second = m_graph.stream(m_graph.client(::getpid()), 2);
    const std::uint32_t sink = m_graph.sink(2);
    m_graph.linkAcross(first, sink, 2);
    m_graph.linkAcross(second, sink, 2);
    const TapPlan tap = plan(2);

    const std::uint32_t stranger = m_graph.stream(m_graph.client(::getppid()), 2);
    const std::uint32_t ours = m_graph.stream(m_client, 2, {{u"node.name"_s, u"vantiro-meter"_s}});
    const std::uint32_t microphone = m_graph.node(u"Audio/Source"_s, 0, 2);
    for (const std::uint32_t other : {stranger, ours, microphone}) {
        m_graph.linkAcross(other, sink, 2);
    }
    EXPECT_EQ(wanted(tap, m_graph),
        (Wanted{{first * 100, 0}, {first * 100 + 1, 1}, {second * 100, 0}, {second * 100 + 1, 1}}));
}

TEST_F(TapPlanTest, StaysWithTheFirstOfTwoDevicesForAsLongAsItCounts)
{
    const std::uint32_t stream = m_graph.stream(m_client, 4);
    const std::uint32_t first = m_graph.sink(8);
    const std::uint32_t second = m_graph.sink(2);
    m_graph.link(stream, 0, first, 6);
    m_graph.link(stream, 1, first, 7);
    m_graph.link(stream, 2, second, 0);
    m_graph.link(stream, 3, second, 1);
    const TapPlan tap = plan(8);
    const Wanted onFirst{{stream * 100, 6}, {stream * 100 + 1, 7}};
    EXPECT_EQ(wanted(tap, m_graph), onFirst);
    std::ranges::rotate(m_graph.links, m_graph.links.begin() + 2);
    EXPECT_EQ(wanted(tap, m_graph), onFirst) << "links that were made anew turn nothing over";
    std::erase_if(m_graph.links, [&](const GraphLink& link) { return link.inputNode == first; });
    static_cast<void>(wanted(tap, m_graph));
    waitUntilSettled();
    EXPECT_EQ(wanted(tap, m_graph), (Wanted{{stream * 100 + 2, 0}, {stream * 100 + 3, 1}}));
}

TEST_F(TapPlanTest, TakesWhatIsLinkedToNothingInTurn)
{
    const std::uint32_t stream = m_graph.stream(m_client, 3);
    const Wanted inTurn{{stream * 100, 0}, {stream * 100 + 1, 1}, {stream * 100 + 2, 0}};
    const TapPlan tap = plan(2);
    EXPECT_EQ(wanted(tap, m_graph), inTurn);
    EXPECT_EQ(wanted(plan(1), m_graph), (Wanted{{stream * 100, 0}, {stream * 100 + 1, 0}, {stream * 100 + 2, 0}}));
    // A stream that somebody else's meter hears plays to no device.
    const std::uint32_t meter = m_graph.node(u"Stream/Input/Audio"_s, 1, 0);
    m_graph.link(stream, 0, meter, 0);
    EXPECT_EQ(wanted(tap, m_graph), inTurn);
}

TEST_F(TapPlanTest, KeepsItsLinksWhileAStreamIsMovedAndWaitsForANewOne)
{
    const std::uint32_t stream = m_graph.stream(m_client, 2);
    const std::uint32_t sink = m_graph.sink(2);
    m_graph.link(stream, 0, sink, 1);
    m_graph.link(stream, 1, sink, 0);
    const TapPlan tap = plan(2);
    const Wanted crossed{{stream * 100, 1}, {stream * 100 + 1, 0}};
    EXPECT_EQ(wanted(tap, m_graph), crossed);
    m_graph.unlink(stream);
    EXPECT_EQ(wanted(tap, m_graph), crossed) << "it is between two devices";
    waitUntilSettled();
    EXPECT_EQ(wanted(tap, m_graph), crossed) << "its device is gone, and its channels stay what they were";

    const std::uint32_t late = m_graph.stream(m_client, 2);
    EXPECT_FALSE(wanted(tap, m_graph).contains({late * 100, 0})) << "it has not found its device yet";
    waitUntilSettled();
    EXPECT_TRUE(wanted(tap, m_graph).contains({late * 100, 0}));
}

TEST_F(TapPlanTest, LivesAsLongAsTheProcess)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    m_graph = Graph();
    const std::uint32_t stream = m_graph.stream(m_graph.client(child), 2);
    const TapPlan tap = plan(2);
    EXPECT_TRUE(tap.isAlive(m_graph));
    std::erase_if(m_graph.nodes, [&](const GraphNode& node) { return node.id == stream; });
    m_graph.clients.clear();
    EXPECT_TRUE(tap.isAlive(m_graph)) << "a program that closes its stream has not quit";
    m_graph.connected = false;
    EXPECT_FALSE(tap.isAlive(m_graph));
    m_graph.connected = true;
    ::kill(child, SIGKILL);
    EXPECT_TRUE(waitFor([&] { return !tap.isAlive(m_graph); }));
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_FALSE(tap.isAlive(m_graph));
}

TEST_F(TapPlanTest, KnowsWhoIsPlaying)
{
    const auto isPlaying = [this] {
        const auto programs = ProgramList().programs(m_graph);
        EXPECT_EQ(programs.size(), 1U);
        return !programs.empty() && programs.front().isPlaying;
    };
    const std::uint32_t stream = m_graph.stream(m_client, 2);
    EXPECT_FALSE(isPlaying()) << "to nobody";
    const std::uint32_t own = m_graph.node(u"Stream/Input/Audio"_s, 2, 0, {{u"node.name"_s, u"vantiro-tap-1"_s}});
    m_graph.linkAcross(stream, own, 2);
    EXPECT_FALSE(isPlaying()) << "to us alone";
    m_graph.linkAcross(stream, m_graph.sink(2), 2);
    EXPECT_TRUE(isPlaying());
    GraphNode& node = m_graph.nodes.front();
    node.properties.insert(u"pulse.corked"_s, u"true"_s);
    EXPECT_FALSE(isPlaying());
    node.properties.remove(u"pulse.corked"_s);
    node.running = false;
    EXPECT_FALSE(isPlaying());
    m_graph.stream(m_client, 2);
    m_graph.linkAcross(m_graph.nodes.back().id, m_graph.nodes[2].id, 2);
    EXPECT_TRUE(isPlaying()) << "one of its streams";
}

TEST_F(TapPlanTest, FindsJackClientsByTheirOutputs)
{
    const auto count = [this](const GraphProperties& client, int inputs, int outputs) {
        m_graph = Graph();
        const std::uint32_t id = m_graph.client(::getpid(), client);
        m_graph.node({}, inputs, outputs, {{u"client.id"_s, QString::number(id)}});
        return ProgramList().programs(m_graph).size();
    };
    const GraphProperties jack{{u"client.api"_s, u"jack"_s}};
    EXPECT_EQ(count(jack, 2, 2), 1U);
    EXPECT_EQ(count(jack, 2, 0), 0U);
    EXPECT_EQ(count({}, 2, 2), 0U);
}

}  // namespace vantiro::test
