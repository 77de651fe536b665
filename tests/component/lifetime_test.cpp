#include <future>
#include <thread>

#include "component_support.h"
#include "simulator/bench.h"

namespace hy_wristlog::host {
namespace {

template <class Action>
auto onAnotherThread(Action action) {
  return std::async(std::launch::async, std::move(action)).get();
}

template <class Interface>
HyUnknown* identityOf(const Ref<Interface>& any) {
  return query<HyUnknown>(any.get(), HY_IID_UNKNOWN).get();
}

class Lifetime : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(DllCanUnloadNow(), HY_S_OK); }
  void TearDown() override { EXPECT_EQ(DllCanUnloadNow(), HY_S_OK); }
};

TEST_F(Lifetime, InterfacesBelongToOneObject) {
  const auto logger = make(HY_CLSID_VARDEN_LOGGER);
  const HyGuid supported[] = {HY_IID_UNKNOWN,
                              HY_IID_DISPATCH,
                              HY_IID_VARDEN_LOGGER,
                              HY_IID_CONNECTION_POINT_CONTAINER,
                              HY_IID_PROVIDE_CLASS_INFO,
                              HY_IID_SERIES_READER};
  for (const HyGuid& from : supported) {
    const auto start = query<HyUnknown>(logger.get(), from);
    ASSERT_NE(start.get(), nullptr);
    EXPECT_EQ(query<HyUnknown>(start.get(), from).get(), start.get());
    for (const HyGuid& to : supported) {
      const auto reached = query<HyUnknown>(start.get(), to);
      ASSERT_NE(reached.get(), nullptr);
      EXPECT_EQ(identityOf(reached), identityOf(logger));
      EXPECT_EQ(query<HyUnknown>(reached.get(), from).get(), start.get());
    }
    for (const HyGuid& other : {HY_IID_MAIN, HY_DIID_VARDEN_LOGGER_EVENTS, HY_GUID_NULL}) {
      void* found = &found;
      EXPECT_EQ(start->QueryInterface(start.get(), &other, &found), HY_E_NOINTERFACE);
      EXPECT_EQ(found, nullptr);
    }
  }
  EXPECT_EQ(logger->AddRef(logger.get()), 2U);
  EXPECT_EQ(logger->Release(logger.get()), 1U);
  EXPECT_EQ(query<HyUnknown>(make(HY_CLSID_SUBJECT).get(), HY_IID_CONNECTION_POINT_CONTAINER).get(), nullptr);

  const auto point = pointOf(logger.get(), HY_DIID_VARDEN_LOGGER_EVENTS);
  EXPECT_EQ(pointOf(logger.get(), HY_DIID_VARDEN_LOGGER_EVENTS).get(), point.get());
  Ref<HyConnectionPointContainer> container;
  point->GetConnectionPointContainer(point.get(), container.receive());
  EXPECT_EQ(identityOf(container), identityOf(logger));
  HyGuid served{};
  point->GetConnectionInterface(point.get(), &served);
  EXPECT_EQ(memcmp(&served, &HY_DIID_VARDEN_LOGGER_EVENTS, sizeof served), 0);
}

TEST_F(Lifetime, FactoriesMakeObjectsAndLocksKeepTheLibrary) {
  void* made = &made;
  EXPECT_EQ(DllGetClassObject(&HY_IID_MAIN, &HY_IID_CLASS_FACTORY, &made), HY_CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(DllGetClassObject(&HY_CLSID_MAIN, &HY_IID_DISPATCH, &made), HY_E_NOINTERFACE);
  ASSERT_EQ(DllGetClassObject(&HY_CLSID_SUBJECT, &HY_IID_UNKNOWN, &made), HY_S_OK);
  auto* factory = static_cast<HyClassFactory*>(made);
  const auto create = [&](HyUnknown* outer, const HyGuid* id) {
    return factory->lpVtbl->CreateInstance(factory, outer, id, &made);
  };
  EXPECT_EQ(create(reinterpret_cast<HyUnknown*>(factory), &HY_IID_UNKNOWN), HY_CLASS_E_NOAGGREGATION);
  EXPECT_EQ(create(nullptr, &HY_IID_MAIN), HY_E_NOINTERFACE);
  EXPECT_EQ(made, nullptr);
  ASSERT_EQ(create(nullptr, &HY_IID_SUBJECT), HY_S_OK);
  EXPECT_EQ(Ref<HyDispatch>(static_cast<HyDispatch*>(made))->GetTypeInfoCount(nullptr, nullptr),
            HY_E_POINTER);
  EXPECT_EQ(factory->lpVtbl->LockServer(factory, 1), HY_S_OK);
  EXPECT_EQ(factory->lpVtbl->Release(factory), 0U);
  EXPECT_EQ(DllCanUnloadNow(), HY_S_FALSE) << "locked";
  EXPECT_EQ(factory->lpVtbl->Release(factory), 0U) << "once too often";
  EXPECT_EQ(factory->lpVtbl->LockServer(factory, 0), HY_S_OK);
  EXPECT_EQ(factory->lpVtbl->LockServer(factory, 0), HY_E_UNEXPECTED);
}

TEST_F(Lifetime, CallsOnReleasedObjectsAreRefused) {
  auto logger = make(HY_CLSID_VARDEN_LOGGER);
  HyDispatch* const gone = logger.leave();
  auto point = pointOf(gone, HY_DIID_VARDEN_LOGGER_EVENTS);
  EXPECT_EQ(gone->lpVtbl->Release(gone), 1U) << "its connection point holds it";
  HyConnectionPoint* const gonePoint = point.leave();
  EXPECT_EQ(gonePoint->lpVtbl->Release(gonePoint), 0U);
  EXPECT_EQ(DllCanUnloadNow(), HY_S_OK);
  void* found = nullptr;
  uint32_t cookie = 0;
  Sink sink(HY_IID_DISPATCH);
  EXPECT_EQ(gone->lpVtbl->Release(gone), 0U);
  EXPECT_EQ(gone->lpVtbl->AddRef(gone), 0U);
  EXPECT_EQ(gone->lpVtbl->QueryInterface(gone, &HY_IID_UNKNOWN, &found), HY_RPC_E_DISCONNECTED);
  EXPECT_EQ(invoke(gone, 1, HY_DISPATCH_PROPERTYGET, {}).Result, HY_RPC_E_DISCONNECTED);
  EXPECT_EQ(gonePoint->lpVtbl->Advise(gonePoint, sink.unknown(), &cookie), HY_RPC_E_DISCONNECTED);
  EXPECT_EQ(sink.References, 1U);
}

TEST_F(Lifetime, NullPointersAreRefused) {
  const auto logger = make(HY_CLSID_VARDEN_LOGGER);
  HyDispatch* object = logger.get();
  const HyDispatchVtable& call = *object->lpVtbl;
  const auto container = query<HyConnectionPointContainer>(object, HY_IID_CONNECTION_POINT_CONTAINER);
  const auto point = pointOf(object, HY_DIID_VARDEN_LOGGER_EVENTS);
  Ref<HyTypeInfo> info;
  call.GetTypeInfo(object, 0, 0, info.receive());
  Ref<HyEnumConnections> all;
  point->EnumConnections(point.get(), all.receive());
  void* out = nullptr;
  uint32_t number = 0;
  int32_t id = 0;
  uint16_t letters[] = {u'x', 0};
  uint16_t* names[] = {letters, nullptr};
  HyDispParams params{};
  const HyResult results[] = {
      call.QueryInterface(object, nullptr, &out),
      call.QueryInterface(nullptr, &HY_IID_UNKNOWN, &out),
      call.GetIDsOfNames(object, nullptr, names, 2, 0, &id),
      call.Invoke(object, 1, nullptr, 0, 2, nullptr, nullptr, nullptr, nullptr),
      call.Invoke(nullptr, 1, nullptr, 0, 2, &params, nullptr, nullptr, nullptr),
      container->FindConnectionPoint(container.get(), nullptr, nullptr),
      point->Advise(point.get(), nullptr, &number),
      all->Next(all.get(), 1, nullptr, &number),
      info->GetNames(info.get(), 1, nullptr, 1, &number),
      info->Invoke(info.get(), nullptr, 1, 2, &params, nullptr, nullptr, nullptr),
      DllGetClassObject(&HY_CLSID_MAIN, nullptr, &out),
  };
  for (std::size_t i = 0; i < std::size(results); ++i) EXPECT_EQ(results[i], HY_E_POINTER) << i;
  EXPECT_EQ(call.AddRef(nullptr) + call.Release(nullptr), 0U);
  EXPECT_EQ(call.GetIDsOfNames(object, nullptr, names, 0, 0, &id), HY_E_INVALIDARG);
}

TEST_F(Lifetime, EnumeratorsGoThroughWhatThereWas) {
  const auto logger = make(HY_CLSID_VARDEN_LOGGER);
  const HyGuid& events = HY_DIID_VARDEN_LOGGER_EVENTS;
  Sink sinks[] = {Sink(events), Sink(events), Sink(events)};
  uint32_t cookies[3];
  for (int i = 0; i < 3; ++i) cookies[i] = connect(logger.get(), events, sinks[i]);
  const auto point = pointOf(logger.get(), events);
  {
    Ref<HyEnumConnections> all, clone;
    point->EnumConnections(point.get(), all.receive());
    disconnect(logger.get(), events, cookies[1]);
    EXPECT_EQ(sinks[1].References, 2U) << "an enumerator holds what it lists";
    EXPECT_EQ(all->Skip(all.get(), 1), HY_S_OK);
    EXPECT_EQ(all->Clone(all.get(), clone.receive()), HY_S_OK);
    HyConnectData data[4];
    uint32_t fetched = 0;
    EXPECT_EQ(all->Next(all.get(), 4, data, &fetched), HY_S_FALSE);
    ASSERT_EQ(fetched, 2U);
    EXPECT_EQ(data[1].pUnk, sinks[2].unknown());
    EXPECT_EQ(all->Skip(all.get(), 1), HY_S_FALSE);
    EXPECT_EQ(all->Reset(all.get()), HY_S_OK);
    all->Next(all.get(), 1, &data[2], nullptr);
    clone->Next(clone.get(), 1, &data[3], nullptr);
    EXPECT_EQ(data[2].dwCookie, cookies[0]);
    EXPECT_EQ(data[3].dwCookie, cookies[1]);
    for (const HyConnectData& each : data) each.pUnk->lpVtbl->Release(each.pUnk);
  }
  EXPECT_EQ(sinks[1].References, 1U);
  const auto container = query<HyConnectionPointContainer>(logger.get(), HY_IID_CONNECTION_POINT_CONTAINER);
  Ref<HyEnumConnectionPoints> points;
  ASSERT_EQ(container->EnumConnectionPoints(container.get(), points.receive()), HY_S_OK);
  Ref<HyConnectionPoint> only, none;
  EXPECT_EQ(points->Next(points.get(), 1, only.receive(), nullptr), HY_S_OK);
  EXPECT_EQ(only.get(), point.get());
  EXPECT_EQ(points->Next(points.get(), 1, none.receive(), nullptr), HY_S_FALSE);
}

TEST_F(Lifetime, OtherThreadsMayHoldButNotCall) {
  auto subject = make(HY_CLSID_SUBJECT);
  HyDispatch* const object = subject.get();
  const HyResult called = onAnotherThread([&] {
    void* found = nullptr;
    EXPECT_EQ(object->lpVtbl->QueryInterface(object, &HY_IID_UNKNOWN, &found), HY_RPC_E_WRONG_THREAD);
    EXPECT_EQ(object->lpVtbl->AddRef(object), 2U);
    EXPECT_EQ(object->lpVtbl->Release(object), 1U);
    // Passing it on to an object of one's own does not help.
    const auto bench = simulator::makeVividBench();
    const platform::WorldScope scope(bench.World);
    const auto main = make(HY_CLSID_MAIN);
    const Value given = objectValue(object);
    EXPECT_EQ(callMethod(main.get(), "Configure", number(0), number(1), number(30), given).Result,
              HY_RPC_E_WRONG_THREAD);
    return invoke(object, 1, HY_DISPATCH_PROPERTYGET, {}).Result;
  });
  EXPECT_EQ(called, HY_RPC_E_WRONG_THREAD);
  EXPECT_EQ(get(object, "Age").text(), "0");
}

/// What another thread releases last ends at the next call of its own thread.
TEST_F(Lifetime, TheLastReferenceMayGoElsewhere) {
  Sink sink(HY_IID_DISPATCH);
  auto logger = make(HY_CLSID_VARDEN_LOGGER);
  connect(logger.get(), HY_DIID_VARDEN_LOGGER_EVENTS, sink);
  HyDispatch* const object = logger.leave();
  EXPECT_EQ(onAnotherThread([&] { return object->lpVtbl->Release(object); }), 0U);
  EXPECT_EQ(sink.References, 2U) << "not ended there";
  make(HY_CLSID_SUBJECT);
  EXPECT_EQ(invoke(object, 1, HY_DISPATCH_PROPERTYGET, {}).Result, HY_RPC_E_DISCONNECTED);
  EXPECT_EQ(sink.References, 1U);
}

/// A logger that a workflow still holds comes back as a new component, or as the one not yet ended.
TEST_F(Lifetime, ALoggerHasOneComponentWhileThatLives) {
  const auto bench = simulator::makeVividBench();
  const platform::WorldScope scope(bench.World);
  const auto main = make(HY_CLSID_MAIN);
  const auto ask = [&](Value& logger) {
    Value simple, words, who;
    return callMethod(main.get(), "GetStatus", number(0), byRef(&simple), byRef(&words), byRef(&logger),
                      byRef(&who))
        .Result;
  };
  Value first, second;
  ASSERT_EQ(ask(first), HY_S_OK);
  ASSERT_EQ(ask(second), HY_S_OK);
  EXPECT_NE(first.pdispVal, second.pdispVal);
  HyDispatch* const elsewhere = second.pdispVal;
  second.vt = HY_VT_EMPTY;
  onAnotherThread([&] { return elsewhere->lpVtbl->Release(elsewhere); });
}

/// A thread that ends takes its objects along, whoever still holds them.
TEST_F(Lifetime, ObjectsEndWithTheirThread) {
  Sink sink(HY_IID_DISPATCH);
  HyDispatch* held = nullptr;
  HyConnectionPoint* point = nullptr;
  std::thread([&] {
    held = make(HY_CLSID_PENDREL).leave();
    point = pointOf(held, HY_DIID_PENDREL_EVENTS).leave();
    connect(held, HY_DIID_PENDREL_EVENTS, sink);
    EXPECT_EQ(sink.References, 2U);
  }).join();
  EXPECT_EQ(sink.References, 1U);
  EXPECT_EQ(DllCanUnloadNow(), HY_S_FALSE);
  EXPECT_EQ(invoke(held, 1, HY_DISPATCH_PROPERTYGET, {}).Result, HY_RPC_E_WRONG_THREAD);
  EXPECT_EQ(point->lpVtbl->Release(point), 0U);
  EXPECT_EQ(held->lpVtbl->Release(held), 0U);
}

TEST_F(Lifetime, ManyThreadsHoldAndRelease) {
  std::vector<HyDispatch*> objects;
  for (int i = 0; i < 50; ++i) objects.push_back(make(HY_CLSID_SUBJECT).leave());
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    for (HyDispatch* object : objects) object->lpVtbl->AddRef(object);
    threads.emplace_back([&] {
      for (HyDispatch* object : objects) {
        for (int i = 0; i < 100; ++i) {
          object->lpVtbl->AddRef(object);
          object->lpVtbl->Release(object);
        }
        object->lpVtbl->Release(object);
        make(HY_CLSID_SUBJECT);
      }
    });
  }
  for (HyDispatch* object : objects) object->lpVtbl->Release(object);
  for (int i = 0; i < 200; ++i) get(make(HY_CLSID_SUBJECT).get(), "Identity");
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace hy_wristlog::host
