// The in-process server: class factory answers, unload counting, and the
// registration it writes and removes (the older filter mapper's path runs
// against the real one under Windows, scripts/test-windows.sh).
#include "filter/com_server.h"
#include "platform/com_runtime.h"
#include "platform/filter_mapper.h"
#include "platform/processor.h"
#include "test_graph.h"

extern "C" int VtcServerRoundTripFromC(void);

namespace vantaro::testing {
namespace {

IClassFactory* Factory() {
  void* object = nullptr;
  EXPECT_EQ(DllGetClassObject(&kClsidVantaroDecoder, &kIidIClassFactory, &object), kSOk);
  return static_cast<IClassFactory*>(object);
}

// An outer object that counts the references sent to it.
struct Outer final : IUnknown {
  int32_t references = 1;
  HRESULT VTC_STDCALL QueryInterface(const GUID&, void**) override { return kENoInterface; }
  uint32_t VTC_STDCALL AddRef() override { return static_cast<uint32_t>(++references); }
  uint32_t VTC_STDCALL Release() override { return static_cast<uint32_t>(--references); }
};

TEST(Server, ClassObjectAnswers) {
  void* object = reinterpret_cast<void*>(1);
  const GUID vtq0 = FourCCSubtype(FourCC("vtq0"));
  EXPECT_EQ(DllGetClassObject(&vtq0, &kIidIClassFactory, &object), kClassENotAvailable);
  EXPECT_EQ(object, nullptr);
  // The interface is checked before the class.
  EXPECT_EQ(DllGetClassObject(&vtq0, &kIidIDispatch, &object), kENoInterface);
  IClassFactory* factory = Factory();
  EXPECT_EQ(factory->QueryInterface(kIidIUnknown, nullptr), kEPointer);
  EXPECT_EQ(factory->CreateInstance(nullptr, kIidIBaseFilter, nullptr), kEPointer);
  Outer outer;
  EXPECT_EQ(factory->CreateInstance(&outer, kIidIBaseFilter, &object), kENoInterface);  // aggregation asks IUnknown
  EXPECT_EQ(factory->CreateInstance(nullptr, kIidIDispatch, &object), kENoInterface);
  EXPECT_EQ(object, nullptr);
  // Aggregated, the filter's interfaces send their references to the outer object.
  ASSERT_EQ(factory->CreateInstance(&outer, kIidIUnknown, &object), kSOk);
  auto* inner = static_cast<IUnknown*>(object);
  ASSERT_EQ(inner->QueryInterface(kIidIBaseFilter, &object), kSOk);
  EXPECT_EQ(outer.references, 2);
  GUID clsid{};
  static_cast<IBaseFilter*>(object)->GetClassID(&clsid);
  EXPECT_EQ(clsid, kClsidVantaroDecoder);
  static_cast<IBaseFilter*>(object)->Release();
  EXPECT_EQ(outer.references, 1);
  EXPECT_EQ(inner->Release(), 0u);
  EXPECT_EQ(factory->Release(), 0u);
}

TEST(Server, UnloadWaitsForObjectsAndLocks) {
  EXPECT_EQ(DllCanUnloadNow(), kSOk);
  IClassFactory* factory = Factory();
  EXPECT_EQ(DllCanUnloadNow(), kSFalse);
  factory->LockServer(1);
  factory->Release();
  EXPECT_EQ(DllCanUnloadNow(), kSFalse);  // the lock alone holds the server
  factory = Factory();
  factory->LockServer(0);
  factory->Release();
  EXPECT_EQ(DllCanUnloadNow(), kSOk);
  EXPECT_EQ(VtcServerRoundTripFromC(), 0);  // the same through the C tables
}

TEST(Server, LoadNeedsSse2) {
  SetProcessorFeatureOverride([] { return false; });
  EXPECT_FALSE(ServerModuleAttach());
  SetProcessorFeatureOverride([] { return true; });
  EXPECT_TRUE(ServerModuleAttach());
  SetProcessorFeatureOverride(nullptr);
}

class Registration : public ::testing::Test {
 protected:
  void SetUp() override {
    RegistryResetForTests();
    MapperResetForTests();
  }
  std::vector<std::string> ClassTree() { return RegistryDumpForTests(kRegistryClassesRoot, u"CLSID"); }
};

constexpr char kClassKey[] = "{30515456-0000-0010-8000-00AA00389B71}";

TEST_F(Registration, WritesExactlyTheClassKeysAndTheFilterDescription) {
  std::string path;
  ASSERT_EQ(ModuleFileName(&path), 0);
  ASSERT_EQ(DllRegisterServer(), kSOk);
  const std::string key = kClassKey;
  EXPECT_EQ(ClassTree(), (std::vector<std::string>{
                             "key " + key, "value " + key + "|=Quorin Vantaro Decoder", "key " + key + "\\InprocServer32",
                             "value " + key + "\\InprocServer32|=" + path,
                             "value " + key + "\\InprocServer32|ThreadingModel=Both"}));
  EXPECT_EQ(ComApartmentDepthForTests(), 0);
  EXPECT_EQ(RegistryOpenHandlesForTests(), 0u);

  const std::vector<MappedFilter> filters = MappedFiltersForTests();
  ASSERT_EQ(filters.size(), 1u);
  const MappedFilter& filter = filters[0];
  EXPECT_TRUE(filter.clsid == kClsidVantaroDecoder && filter.name == u"Quorin Vantaro Decoder" &&
              filter.merit == 0x00800000u);
  // The pins pass through as the server's table has them: an input of both
  // cases of VTQ0..VTQ5 (no VTQ7 or VTQ9), an output of any video. The
  // system's graph finds the filter by them under Windows.
  ASSERT_EQ(filter.pins.size(), 2u);
  EXPECT_EQ(std::make_tuple(filter.pins[0].output, filter.pins[0].types.size(), filter.pins[1].output),
            std::make_tuple(0, 12u, 1));
}

TEST_F(Registration, TwiceLeavesOneEntryAndRemovalTakesTheWholeTree) {
  EXPECT_EQ(DllUnregisterServer(), kSOk);  // never registered: nothing to do
  ASSERT_EQ(DllRegisterServer(), kSOk);
  ASSERT_EQ(DllRegisterServer(), kSOk);
  EXPECT_EQ(MappedFiltersForTests().size(), 1u);
  const std::string unregister = std::string("unregister ") + kClassKey;
  EXPECT_EQ(MapperCallsForTests(), (std::vector<std::string>{unregister, unregister, "register Quorin Vantaro Decoder",
                                                             unregister, "register Quorin Vantaro Decoder"}));
  // Keys below the class's own go too, depth first; other classes stay.
  RegistryKey deep = 0;
  ASSERT_EQ(RegistryCreateKey(kRegistryClassesRoot, u"CLSID\\{30515456-0000-0010-8000-00AA00389B71}\\A\\B\\C", &deep), 0);
  RegistryCloseKey(deep);
  ASSERT_EQ(RegistryCreateKey(kRegistryClassesRoot, u"CLSID\\{00000000-1111-2222-3333-444444444444}", &deep), 0);
  RegistryCloseKey(deep);
  ASSERT_EQ(DllUnregisterServer(), kSOk);
  EXPECT_EQ(ClassTree(), (std::vector<std::string>{"key {00000000-1111-2222-3333-444444444444}"}));
  EXPECT_TRUE(MappedFiltersForTests().empty());
  EXPECT_EQ(RegistryOpenHandlesForTests(), 0u);
}

TEST_F(Registration, FailuresStopWithoutUndoing) {
  const ClassCreator current = SetClassCreatorForTests(kClsidFilterMapper2, nullptr);
  const ClassCreator older = SetClassCreatorForTests(kClsidFilterMapper, nullptr);
  const HRESULT noMapper = DllRegisterServer();
  SetClassCreatorForTests(kClsidFilterMapper2, current);
  SetClassCreatorForTests(kClsidFilterMapper, older);
  EXPECT_EQ(noMapper, kRegDbEClassNotReg);
  EXPECT_EQ(ClassTree().size(), 5u);  // the keys written before stay
  EXPECT_EQ(ComApartmentDepthForTests(), 0);

  RegistryResetForTests();
  RegistrySetDeniedForTests(kRegistryClassesRoot, true);
  EXPECT_EQ(DllRegisterServer(), HresultFromWin32(kErrorAccessDenied));
  EXPECT_TRUE(MappedFiltersForTests().empty());  // stopped before the mapper
  EXPECT_EQ(DllUnregisterServer(), kSOk);        // an unopenable key ends removal silently
  RegistrySetDeniedForTests(kRegistryClassesRoot, false);
}

}  // namespace
}  // namespace vantaro::testing
