// Server mode on loopback, measured:
//  1. delivery throughput of VGA depth samples with every map (about 11 MB each) from an in-process
//     server to a client, against a bare loopback TCP socket sending the same bytes, and the cost per
//     sample against a memcpy of the bytes, all in this run;
//  2. a zerlane-server child process streaming the simulated camera's VGA depth node, every map on, at
//     30 fps to one client for a while (60 s by default): samples received, dropped, server CPU;
//  3. four clients streaming the same camera and a fifth that stops reading for a while: rates and drops
//     of each, and the server's CPU per streaming client.
//   bench_server [seconds for measurement 2, default 60]

#include "BenchCamera.h"
#include "Server.h"

#include "Zerlane/Zerlane.h"

#include <arpa/inet.h>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <sstream>
#include <cstdio>
#include <fstream>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Zerlane;
using namespace BenchCamera;
using Clock = std::chrono::steady_clock;

extern char** environ;

namespace {

double seconds(Clock::duration d)
{
    return std::chrono::duration<double>(d).count();
}

// Runs a context's event loop on a thread of its own.
class Loop {
public:
    explicit Loop(Context context) : m_context(std::move(context)), m_thread([this] { run(); }) {}
    ~Loop()
    {
        m_context.quit();
        m_thread.join();
    }

private:
    void run()
    {
        try {
            m_context.run();
        } catch (const Exception& e) {
            std::fprintf(stderr, "run() ended: %s\n", e.what());
        }
    }
    Context m_context;
    std::thread m_thread;
};

// Counts one depth node's samples as a client's handler sees them.
struct DepthCounter {
    std::atomic<int64_t> samples {0};
    std::atomic<int64_t> bytes {0};
    std::atomic<int64_t> dropped {0};
    FunctionHandler<DepthNode, DepthNode::NewSampleReceivedData> handler {
        [this](DepthNode, DepthNode::NewSampleReceivedData d) {
            bytes += int64_t(d.phaseMap.size()) * 2 + d.confidenceMap.size() * 2 + d.depthMap.size() * 2
                   + d.depthMapFloatingPoint.size() * 4 + d.vertices.size() * 6 + d.verticesFloatingPoint.size() * 12
                   + d.uvMap.size() * 8;
            dropped += d.droppedSampleCount;
            ++samples;
        }};
};

// 1a: the library. Keeps two samples in flight so that nothing is dropped and the pipe is full.
double libraryBytesPerSecond(int count, double& perSampleUs)
{
    auto device = std::make_shared<BenchDevice>();
    std::vector<std::unique_ptr<plugin::Driver>> drivers;
    drivers.push_back(std::make_unique<BenchDriver>(device));
    server::Server::Options options;
    options.port = 0;
    server::Server server(options, std::move(drivers));
    std::thread serving([&] { server.run(); });

    double rate = 0;
    {
        Context context = Context::create("127.0.0.1", server.port());
        DepthNode node = context.getDevices()[0].getNodes()[0].as<DepthNode>();
        DepthCounter counter;
        node.newSampleReceivedEvent().connect(&counter.handler);
        context.registerNode(node);
        context.startNodes();
        Loop loop(context);
        while (!device->node->sink())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const auto block = std::make_shared<const MapBlock>();
        const auto start = Clock::now();
        for (int i = 0; i < count; ++i) {
            while (counter.samples < i - 1)
                std::this_thread::yield();
            device->node->sink()->depthSample(device->node.get(), makeSample(block));
        }
        while (counter.samples < count)
            std::this_thread::yield();
        const double elapsed = seconds(Clock::now() - start);
        rate = double(counter.bytes) / elapsed;
        perSampleUs = elapsed / count * 1e6;
        if (counter.dropped != 0)
            std::printf("  (the library dropped %lld samples)\n", static_cast<long long>(counter.dropped.load()));
        context.stopNodes();
        node.newSampleReceivedEvent().disconnect(&counter.handler);
    }
    server.stop();
    serving.join();
    return rate;
}

// 1b: a bare loopback TCP connection carrying the same bytes per sample.
double socketBytesPerSecond(int count)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::listen(listener, 1);
    socklen_t length = sizeof address;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    const int sender = ::socket(AF_INET, SOCK_STREAM, 0);
    ::connect(sender, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const int receiver = ::accept(listener, nullptr, nullptr);

    const std::size_t bytes = MapBlock::bytes();
    std::vector<char> out(bytes, 7), in(bytes);
    const auto start = Clock::now();
    std::thread reading([&] {
        for (int i = 0; i < count; ++i) {
            std::size_t got = 0;
            while (got < bytes) {
                const ssize_t n = ::recv(receiver, in.data() + got, bytes - got, 0);
                if (n <= 0)
                    return;
                got += std::size_t(n);
            }
        }
    });
    for (int i = 0; i < count; ++i) {
        std::size_t sent = 0;
        while (sent < bytes)
            sent += std::size_t(std::max<ssize_t>(0, ::send(sender, out.data() + sent, bytes - sent, MSG_NOSIGNAL)));
    }
    reading.join();
    const double elapsed = seconds(Clock::now() - start);
    ::close(sender);
    ::close(receiver);
    ::close(listener);
    return double(bytes) * count / elapsed;
}

uint16_t freePort()
{
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(probe);
    return ntohs(address.sin_port);
}

// zerlane-server as a child process, for measurements 2 and 3.
class ServerProcess {
public:
    ServerProcess() : m_port(freePort())
    {
        const std::string port = std::to_string(m_port);
        char* argv[] = {const_cast<char*>(ZERLANE_SERVER_PATH), const_cast<char*>("--port"), const_cast<char*>(port.c_str()),
                        nullptr};
        posix_spawn_file_actions_t quiet; // its log lines would drown the figures
        posix_spawn_file_actions_init(&quiet);
        posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
        ::posix_spawn(&m_pid, ZERLANE_SERVER_PATH, &quiet, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&quiet);
        for (int i = 0; i < 100; ++i) {
            try {
                Context::create("127.0.0.1", m_port);
                return;
            } catch (const TransportException&) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }
        }
    }
    ~ServerProcess()
    {
        ::kill(m_pid, SIGTERM);
        ::waitpid(m_pid, nullptr, 0);
    }
    uint16_t port() const { return m_port; }
    // User and system CPU of the server so far, seconds.
    double cpuSeconds() const
    {
        std::ifstream stat("/proc/" + std::to_string(m_pid) + "/stat");
        std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
        std::istringstream fields(text.substr(text.rfind(')') + 2));
        std::string field;
        double ticks = 0;
        for (int i = 3; i <= 15 && fields >> field; ++i) {
            if (i == 14 || i == 15)
                ticks += std::stod(field);
        }
        return ticks / double(::sysconf(_SC_CLK_TCK));
    }

private:
    uint16_t m_port;
    pid_t m_pid = 0;
};

// One client of the child server streaming the simulated camera's depth node.
struct Client {
    Context context;
    DepthNode node;
    DepthCounter counter;

    Client(uint16_t port, bool configure, FrameFormat format)
        : context(Context::create("127.0.0.1", port)), node(context.getDevices()[0].getNodes()[0].as<DepthNode>())
    {
        if (configure) {
            context.requestControl(node);
            for (const DepthNode::Configuration& c : node.getConfigurations()) {
                if (c.frameFormat == format && c.frameRate == 30 && c.mode == CAMERA_MODE_CLOSE_RANGE && !c.saturation) {
                    node.setConfiguration(c);
                    break;
                }
            }
        }
        for (const char* map : {"enablePhaseMap", "enableConfidenceMap", "enableDepthMap", "enableDepthMapFloatingPoint",
                                "enableVertices", "enableVerticesFloatingPoint", "enableUvMap"})
            Property<bool>::setValue(Interface(node), map, true);
        node.newSampleReceivedEvent().connect(&counter.handler);
        context.registerNode(node);
    }
    ~Client() { node.newSampleReceivedEvent().disconnect(&counter.handler); }
};

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    Utils::HMLogger::instance()->setEchoToStderr(false); // the reference stays for the whole run
    const int streamSeconds = argc > 1 ? std::atoi(argv[1]) : 60;
    constexpr int kSamples = 200;
    const double mb = 1024.0 * 1024.0;

    std::printf("1. VGA depth, every map (%.1f MB a sample), %d samples through loopback\n", MapBlock::bytes() / mb, kSamples);
    // Alternating rounds, medians: the machine is shared, and one round can land on a busy moment.
    std::vector<double> libraryRates, bareRates, ratios, perSample, memcpys;
    const MapBlock block;
    for (int round = 0; round < 3; ++round) {
        double us = 0;
        libraryRates.push_back(libraryBytesPerSecond(kSamples, us));
        perSample.push_back(us);
        bareRates.push_back(socketBytesPerSecond(kSamples));
        memcpys.push_back(memcpyNanoseconds(block) / 1000.0);
        ratios.push_back(libraryRates.back() / bareRates.back());
        std::printf("   round %d: library %.0f MB/s, bare socket %.0f MB/s, ratio %.2f; %.0f us a sample, memcpy %.0f us\n",
                    round + 1, libraryRates.back() / mb, bareRates.back() / mb, ratios.back(), us, memcpys.back());
    }
    const auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    std::printf("   median: library %.0f MB/s, bare loopback socket (same bytes) %.0f MB/s, ratio library / bare %.2f\n",
                median(libraryRates) / mb, median(bareRates) / mb, median(ratios));
    std::printf("   median cost per sample %.0f us = %.1f x memcpy of its bytes (%.0f us)\n", median(perSample),
                median(perSample) / median(memcpys), median(memcpys));

    ServerProcess process;
    {
        std::printf("2. zerlane-server, simulated camera VGA 30 fps every map, one client, %d s\n", streamSeconds);
        Client client(process.port(), true, FRAME_FORMAT_VGA);
        Loop loop(client.context);
        client.context.startNodes();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const int64_t before = client.counter.samples;
        const int64_t droppedBefore = client.counter.dropped;
        const double cpuBefore = process.cpuSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(streamSeconds));
        const int64_t got = client.counter.samples - before;
        std::printf("   received %lld samples (%.1f/s), dropped %lld, server CPU %.0f%% of a core\n",
                    static_cast<long long>(got), double(got) / streamSeconds,
                    static_cast<long long>(client.counter.dropped - droppedBefore),
                    100.0 * (process.cpuSeconds() - cpuBefore) / streamSeconds);
        client.context.stopNodes();
    }
    {
        constexpr int kWindow = 10;
        std::printf("3. QVGA 30 fps every map: one client, then four, and a fifth that stops reading (%d s each)\n", kWindow);
        std::vector<std::unique_ptr<Client>> clients;
        std::vector<std::unique_ptr<Loop>> loops;
        clients.push_back(std::make_unique<Client>(process.port(), true, FRAME_FORMAT_QVGA));
        loops.push_back(std::make_unique<Loop>(clients.back()->context));
        clients.back()->context.startNodes();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        double cpu = process.cpuSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(kWindow));
        const double oneClient = (process.cpuSeconds() - cpu) / kWindow;
        std::printf("   1 client: server CPU %.0f%% of a core\n", 100.0 * oneClient);

        for (int i = 0; i < 3; ++i) {
            clients.push_back(std::make_unique<Client>(process.port(), false, FRAME_FORMAT_QVGA));
            loops.push_back(std::make_unique<Loop>(clients.back()->context));
            clients.back()->context.startNodes();
        }
        Client fifth(process.port(), false, FRAME_FORMAT_QVGA); // its loop does not run yet: it reads nothing
        fifth.context.startNodes();
        std::this_thread::sleep_for(std::chrono::seconds(1));
        std::vector<int64_t> before, droppedBefore;
        for (const auto& c : clients)
            before.push_back(c->counter.samples), droppedBefore.push_back(c->counter.dropped);
        cpu = process.cpuSeconds();
        std::this_thread::sleep_for(std::chrono::seconds(kWindow));
        const double fiveClients = (process.cpuSeconds() - cpu) / kWindow;
        for (std::size_t i = 0; i < clients.size(); ++i) {
            std::printf("   client %zu: %.1f samples/s, dropped %lld\n", i + 1,
                        double(clients[i]->counter.samples - before[i]) / kWindow,
                        static_cast<long long>(clients[i]->counter.dropped - droppedBefore[i]));
        }
        {
            Loop late(fifth.context);
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
        std::printf("   client 5 (read nothing for %d s, then 1 s): %lld samples, dropped %lld\n", kWindow + 1,
                    static_cast<long long>(fifth.counter.samples.load()), static_cast<long long>(fifth.counter.dropped.load()));
        std::printf("   server CPU with 5 streaming clients %.0f%% of a core; per client beyond the first %.1f%%\n",
                    100.0 * fiveClients, 100.0 * (fiveClients - oneClient) / 4);
        for (auto& c : clients)
            c->context.stopNodes();
        loops.clear();
    }
    return 0;
}
