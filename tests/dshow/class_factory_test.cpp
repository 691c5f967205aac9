#include <gtest/gtest.h>

#include "dshow/class_factory.h"
#include "dshow/module_functions.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/outer_object.h"
#include "tests/dshow/test_filter.h"
#include "tests/dshow/test_templates.h"
#include "win/com_ptr.h"
#include "win/module_instance.h"

namespace {

using dshow_test::Creation;
using dshow_test::g_creation;
using dshow_test::kFilterClass;
using dshow_test::kPlainClass;
using win::ComPtr;

class ClassFactoryTest : public dshow_test::ObjectCountTest {
  protected:
    void TearDown() override {
        g_creation = Creation::Succeeds;
        ObjectCountTest::TearDown();
    }
    static ComPtr<IClassFactory> Factory(REFCLSID clsid) {
        ComPtr<IClassFactory> factory;
        EXPECT_EQ(AMovieDllGetClassObject(clsid, IID_IClassFactory, factory.PutVoid()), S_OK);
        return factory;
    }
};

TEST_F(ClassFactoryTest, UnknownClassIsNotAvailable) {
    void* object = &object;
    EXPECT_EQ(AMovieDllGetClassObject(dshow_test::kUnknownClass, IID_IClassFactory, &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
}

TEST_F(ClassFactoryTest, OtherInterfacesThanUnknownAndClassFactoryAreRefused) {
    void* object = &object;
    EXPECT_EQ(AMovieDllGetClassObject(kFilterClass, IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(AMovieDllGetClassObject(dshow_test::kUnknownClass, IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(AMovieDllGetClassObject(kFilterClass, IID_IClassFactory, nullptr), E_POINTER);
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(AMovieDllGetClassObject(kFilterClass, IID_IUnknown, unknown.PutVoid()), S_OK);
}

TEST_F(ClassFactoryTest, FactoryCreatesObjectsOfItsClass) {
    const auto factory = Factory(kFilterClass);
    ComPtr<IBaseFilter> filter;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid()), S_OK);
    CLSID clsid{};
    EXPECT_EQ(filter->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, dshow_test::TestFilter::kClassId);
    EXPECT_EQ(filter->AddRef(), 2U);
    EXPECT_EQ(filter->Release(), 1U);
}

TEST_F(ClassFactoryTest, ObjectWithoutTheInterfaceIsGoneAgain) {
    const auto factory = Factory(kFilterClass);
    const LONG before = LivingObjects();
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(LivingObjects(), before);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ClassFactoryTest, AggregationNeedsUnknown) {
    const auto factory = Factory(kFilterClass);
    dshow_test::OuterObject outer;
    void* object = &object;
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IBaseFilter, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    ComPtr<IUnknown> inner;
    ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, inner.PutVoid()), S_OK);
    outer.Aggregate(inner);
    ComPtr<IBaseFilter> filter;
    ASSERT_EQ(outer.QueryInterface(IID_IBaseFilter, filter.PutVoid()), S_OK);
    EXPECT_EQ(outer.References(), 1);
}

TEST_F(ClassFactoryTest, FailedCreationLeavesNothing) {
    const auto factory = Factory(kPlainClass);
    const LONG before = LivingObjects();
    void* object = nullptr;
    g_creation = Creation::ReportsFailure;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &object), E_ACCESSDENIED);
    g_creation = Creation::ReportsFailureWithoutObject;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &object), E_ACCESSDENIED);
    g_creation = Creation::GivesNothing;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &object), E_OUTOFMEMORY);
    g_creation = Creation::ThrowsNoMemory;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &object), E_OUTOFMEMORY);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(LivingObjects(), before);
}

TEST_F(ClassFactoryTest, ModuleStaysWhileAnObjectLives) {
    ASSERT_EQ(AMovieDllCanUnloadNow(), S_OK);
    auto factory = Factory(kPlainClass);
    EXPECT_EQ(AMovieDllCanUnloadNow(), S_FALSE); // the factory is an object too
    ComPtr<IUnknown> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()), S_OK);
    factory.Reset();
    EXPECT_EQ(AMovieDllCanUnloadNow(), S_FALSE);
    object.Reset();
    EXPECT_EQ(AMovieDllCanUnloadNow(), S_OK);
}

TEST_F(ClassFactoryTest, ModuleStaysWhileAnyServerLockIsHeld) {
    auto factory = Factory(kPlainClass);
    EXPECT_FALSE(CClassFactory::IsLocked());
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.Reset();
    EXPECT_EQ(AMovieDllCanUnloadNow(), S_FALSE);
    factory = Factory(kFilterClass); // the locks are the module's, not the factory's
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_TRUE(CClassFactory::IsLocked());
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_FALSE(CClassFactory::IsLocked());
    EXPECT_EQ(factory->LockServer(FALSE), S_OK); // one too many
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_TRUE(CClassFactory::IsLocked());
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory.Reset();
    EXPECT_EQ(AMovieDllCanUnloadNow(), S_OK);
}

TEST_F(ClassFactoryTest, EntryPointRecordsTheInstanceAndRunsTheInitRoutines) {
    const HINSTANCE before = win::ModuleInstance();
    dshow_test::g_initCalls = {};
    const auto instance = reinterpret_cast<HINSTANCE>(UINT_PTR{0x1230000});
    EXPECT_TRUE(AMovieDllEntry(instance, DLL_PROCESS_ATTACH));
    EXPECT_EQ(win::ModuleInstance(), instance);
    EXPECT_EQ(dshow_test::g_initCalls.loading, 1);
    EXPECT_TRUE(AMovieDllEntry(instance, DLL_THREAD_ATTACH));
    EXPECT_TRUE(AMovieDllEntry(instance, DLL_PROCESS_DETACH));
    EXPECT_EQ(dshow_test::g_initCalls.loading, 1);
    EXPECT_EQ(dshow_test::g_initCalls.unloading, 1);
    win::SetModuleInstance(before);
}

} // namespace
