// The library's exports and the class factory, through the real DLL loaded like the
// driver's host loads it.
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "host/plugin_under_test.h"

using hosttest::HeapGrowth;
using hosttest::LoadedPlugin;
using ozdkhost::ComRef;

namespace {

void* const kSentinel = reinterpret_cast<void*>(0x5A5A5A5A);
// Far below one leaked factory or object per round (each is a heap block of 16 bytes
// or more), far above the noise of the runtime.
constexpr int kLeakRounds = 2000;
constexpr long long kLeakAllowance = 4000;

}  // namespace

TEST_F(LoadedPlugin, DllGetClassObjectGivesAFactoryOnlyForItsOwnClassAndFactoryInterfaces) {
    struct Case {
        const char* what;
        CLSID clsid;
        IID iid;
        HRESULT expected;
    } const cases[] = {
        {"own class, IClassFactory", CLSID_OEMUI, IID_IClassFactory, S_OK},
        {"own class, IPrintOemUI2", CLSID_OEMUI, IID_IPrintOemUI2, E_NOINTERFACE},
        {"unknown class", IID_IPrintOemUI2, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
    };
    for (const auto& c : cases) {
        void* object = kSentinel;
        EXPECT_EQ(library.GetClassObject(c.clsid, c.iid, &object), c.expected) << c.what;
        if (c.expected == S_OK) {
            ASSERT_NE(object, nullptr) << c.what;
            ASSERT_NE(object, kSentinel) << c.what;
            // Handed over with exactly the caller's reference.
            EXPECT_EQ(static_cast<IUnknown*>(object)->Release(), 0u) << c.what;
        } else {
            EXPECT_EQ(object, nullptr) << c.what;
        }
    }
    EXPECT_EQ(library.GetClassObject(CLSID_OEMUI, IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(LoadedPlugin, CreateInstanceGivesOnlyIUnknownAndIPrintOemUI2WithoutAggregation) {
    ComRef<IClassFactory> factory = NewFactory();
    ASSERT_TRUE(factory);
    struct Case {
        const char* what;
        bool outer;
        IID iid;
        HRESULT expected;
    } const cases[] = {
        {"IUnknown", false, IID_IUnknown, S_OK},
        {"IPrintOemUI2", false, IID_IPrintOemUI2, S_OK},
        {"IPrintOemUI (first version)", false, IID_IPrintOemUI, E_NOINTERFACE},
        {"aggregated IUnknown", true, IID_IUnknown, CLASS_E_NOAGGREGATION},
    };
    for (const auto& c : cases) {
        void* object = kSentinel;
        IUnknown* outer = c.outer ? static_cast<IUnknown*>(factory.get()) : nullptr;
        EXPECT_EQ(factory->CreateInstance(outer, c.iid, &object), c.expected) << c.what;
        if (c.expected == S_OK) {
            ASSERT_NE(object, nullptr) << c.what;
            EXPECT_EQ(static_cast<IUnknown*>(object)->Release(), 0u) << c.what << ": one reference, the caller's";
        } else {
            EXPECT_EQ(object, nullptr) << c.what;
        }
    }
    // The object answers for IUnknown with itself and refuses the first version.
    ComRef<IPrintOemUI2> object = NewObject();
    ASSERT_TRUE(object);
    void* answer = kSentinel;
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, &answer), S_OK);
    EXPECT_EQ(answer, static_cast<void*>(object.get()));
    object->Release();
    EXPECT_EQ(object->QueryInterface(IID_IPrintOemUI, &answer), E_NOINTERFACE);
    EXPECT_EQ(answer, nullptr);
}

TEST_F(LoadedPlugin, RefusedRequestsLeaveNoFactoryOrObjectAlive) {
    ComRef<IClassFactory> factory = NewFactory();
    ASSERT_TRUE(factory);
    void* object = nullptr;
    const struct {
        const char* what;
        std::function<void()> request;
    } refused[] = {
        {"factory asked for IPrintOemUI2", [&] { library.GetClassObject(CLSID_OEMUI, IID_IPrintOemUI2, &object); }},
        {"aggregation", [&] { factory->CreateInstance(factory.get(), IID_IUnknown, &object); }},
        {"IPrintOemUI", [&] { factory->CreateInstance(nullptr, IID_IPrintOemUI, &object); }},
    };
    for (const auto& r : refused) {
        EXPECT_LT(HeapGrowth(kLeakRounds, r.request), kLeakAllowance) << r.what;
    }

    // The measurement sees a leak of this size: objects kept alive make it grow.
    std::vector<ComRef<IPrintOemUI2>> kept;
    kept.reserve(kLeakRounds + 10);
    const auto keep = [&] {
        kept.emplace_back();
        factory->CreateInstance(nullptr, IID_IPrintOemUI2, kept.back().put());
    };
    EXPECT_GT(HeapGrowth(kLeakRounds, keep), kLeakAllowance);
}

TEST_F(LoadedPlugin, OnlyAnOutstandingServerLockKeepsTheLibraryLoaded) {
    ComRef<IClassFactory> factory = NewFactory();
    ASSERT_TRUE(factory);
    ComRef<IPrintOemUI2> object = NewObject();
    ASSERT_TRUE(object);
    EXPECT_EQ(library.CanUnloadNow(), S_OK) << "live objects and factories are not counted";

    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE) << "one lock still outstanding";
    factory.reset();
    object.reset();
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE) << "the lock outlives the factory that took it";

    EXPECT_EQ(NewFactory()->LockServer(FALSE), S_OK);
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
    EXPECT_TRUE(library.UnloadIfAllowed());
    EXPECT_FALSE(library.loaded());
}

TEST_F(LoadedPlugin, ConcurrentReferencesAndLocksFromEightThreadsLeaveConsistentCounts) {
    ComRef<IClassFactory> factory = NewFactory();
    ComRef<IPrintOemUI2> object = NewObject();
    ASSERT_TRUE(factory);
    ASSERT_TRUE(object);
    constexpr int kThreads = 8;
    constexpr int kRounds = 50000;

    const auto runOnAllThreads = [](auto work) {
        std::atomic<int> waiting{kThreads};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&] {
                waiting.fetch_sub(1);
                while (waiting.load() > 0) {
                }  // start together
                for (int i = 0; i < kRounds; ++i) work();
            });
        }
        for (auto& thread : threads) thread.join();
    };

    runOnAllThreads([&] {
        object->AddRef();
        factory->AddRef();
        factory->LockServer(TRUE);
    });
    const ULONG expected = 1 + kThreads * kRounds;
    EXPECT_EQ(object->AddRef(), expected + 1);
    EXPECT_EQ(object->Release(), expected);
    EXPECT_EQ(factory->AddRef(), expected + 1);
    EXPECT_EQ(factory->Release(), expected);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);

    runOnAllThreads([&] {
        object->Release();
        factory->Release();
        factory->LockServer(FALSE);
    });
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(factory->AddRef(), 2u);
    EXPECT_EQ(factory->Release(), 1u);
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
}
