#include "platform/broker/SignalBroker.h"

#include <boost/signals2/signal.hpp>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace vrk::broker {
namespace {

/// A signal that is raised far more often than it is connected to.
///
/// Boost.Signals2 keeps the receivers and gives out the connections, but does not call: its emission takes locks and
/// allocates, and all of that would lie under the render queue's lock. The receivers are called from an immutable list
/// instead, and who calls says so in one counter; no lock is taken and no reference is counted.
///
/// A disconnected receiver is in no list that is read from then on. It is freed with the last call that may still see it:
/// at once where nobody calls.
template <typename... Args>
class Signal {
public:
    using Function = std::function<void(Args...)>;

    boost::signals2::connection connect(Function function)
    {
        const auto receiver = std::make_shared<Receiver>(std::move(function));
        // Lives in the slot, which Signals2 destroys where and when it is disconnected.
        std::shared_ptr<Receiver> leaving(receiver.get(), [this](Receiver* gone) { leave(*gone); });
        receiver->connection = slots.connect([leaving = std::move(leaving)](Args...) {});
        {
            const std::lock_guard lock(mutex);
            List next = *owned;
            next.push_back(receiver);
            publish(std::move(next));
        }
        freeRetired();
        return receiver->connection;
    }

    void raise(Args... args)
    {
        if (count.load(std::memory_order_acquire) == 0)
            return;
        const Visit visit(*this);
        for (const std::shared_ptr<Receiver>& receiver : *current.load())
            if (receiver->isConnected.load(std::memory_order_acquire) && !receiver->connection.blocked())
                receiver->function(args...);
    }

private:
    struct Receiver {
        explicit Receiver(Function function) : function(std::move(function)) {}

        Function function;
        std::atomic<bool> isConnected{true};
        boost::signals2::connection connection;
    };
    using List = std::vector<std::shared_ptr<Receiver>>;

    /// One raise, from before it looks for the list until it has left it, be it by a receiver's failure.
    class Visit {
    public:
        explicit Visit(Signal& signal) : signal(signal) { signal.visits.fetch_add(1); }
        ~Visit()
        {
            if (signal.visits.fetch_sub(1) == 1 && signal.hasRetired.load())
                signal.freeRetired();
        }
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;

    private:
        Signal& signal;
    };

    void leave(Receiver& gone)
    {
        gone.isConnected.store(false, std::memory_order_release);
        {
            const std::lock_guard lock(mutex);
            List next = *owned;
            std::erase_if(next, [&gone](const std::shared_ptr<Receiver>& known) { return known.get() == &gone; });
            publish(std::move(next));
        }
        freeRetired();
    }

    /// The mutex is held.
    void publish(List next)
    {
        count.store(next.size(), std::memory_order_release);
        auto newest = std::make_unique<const List>(std::move(next));
        current.store(newest.get());
        retired.push_back(std::exchange(owned, std::move(newest)));
        hasRetired.store(true);
    }

    /// Frees the lists that are read no more, unless a raise is going on: then its end does. Who raises counts itself before
    /// it reads `current`, and here `current` was changed before the count is read, so one of the two sees the other.
    void freeRetired()
    {
        std::vector<std::unique_ptr<const List>>
            unread; // dies after the lock is gone: a capture may connect as it dies
        const std::lock_guard lock(mutex);
        if (visits.load() != 0)
            return;
        unread.swap(retired);
        hasRetired.store(false);
    }

    boost::signals2::signal<void(Args...)> slots;
    std::atomic<std::size_t> count{0}; // of the receivers in `current`
    std::mutex mutex;                  // guards the two below, and the writing of `current`
    std::unique_ptr<const List> owned = std::make_unique<const List>();
    std::vector<std::unique_ptr<const List>> retired; // may still be read
    std::atomic<const List*> current{owned.get()};
    std::atomic<bool> hasRetired{false};
    alignas(64) std::atomic<unsigned> visits{0}; // apart from what is only read
};

struct Signals {
    Signal<> updateScene;
    Signal<> cameraMoved;
    Signal<> snapResultInvalidated;
    Signal<double> frameTicked;
};

Signals& signals()
{
    static Signals* const all = new Signals; // never freed: threads may still raise while statics are destroyed
    return *all;
}

} // namespace

void SignalBroker::updateScene()
{
    signals().updateScene.raise();
}

void SignalBroker::cameraMoved()
{
    signals().cameraMoved.raise();
}

void SignalBroker::snapResultInvalidated()
{
    signals().snapResultInvalidated.raise();
}

void SignalBroker::frameTicked(double milliseconds)
{
    signals().frameTicked.raise(milliseconds);
}

boost::signals2::connection SignalBroker::onUpdateScene(std::function<void()> receiver)
{
    return signals().updateScene.connect(std::move(receiver));
}

boost::signals2::connection SignalBroker::onCameraMoved(std::function<void()> receiver)
{
    return signals().cameraMoved.connect(std::move(receiver));
}

boost::signals2::connection SignalBroker::onSnapResultInvalidated(std::function<void()> receiver)
{
    return signals().snapResultInvalidated.connect(std::move(receiver));
}

boost::signals2::connection SignalBroker::onFrameTicked(std::function<void(double)> receiver)
{
    return signals().frameTicked.connect(std::move(receiver));
}

} // namespace vrk::broker
