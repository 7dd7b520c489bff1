// cls_Lazy on its own and through the typed helper, on a database that
// keeps no proxies: the member then reads its object at once.

#include "cls_FakeDatabase.h"
#include "cls_Lazy.h"
#include "cls_Persistent.h"
#include "cls_Static.h"
#include "cls_TestModel.h"

#include <gtest/gtest.h>

namespace {

// Refers to materials as the test model's sections do, lazily.
struct Shelf {
  static constexpr unsigned int kClassId = 0x01000009;
  cls_Uid uid;
  int id = 0;
  cls_Lazy<Material> material;
  cls_Lazy<Material> spare;
};

cls_FieldHandle const kShelfField(3, "Section");

TEST(LazyTest, AValueInMemoryIsLoadedAndWithoutProxiesIsStoredAsAReferenceAndReadAtOnce) {
  cls_ClassRegistrar registrar;
  RegisterTestModel(registrar);
  cls_Persistent<Shelf>("Shelf", Shelf::kClassId, 1)
      .Identity(&Shelf::uid)
      .Member(1, "Id", &Shelf::id)
      .Member(2, "Material", &Shelf::material)
      .Member(3, "Spare", &Shelf::spare)
      .Register(registrar);
  cls_AttributeMetadata const& attribute = registrar.ConstGet(Shelf::kClassId).FindAttribute("Material");
  EXPECT_EQ(attribute.m_Type, cls_AttrObjectCow);
  EXPECT_EQ(attribute.m_TargetClass, Material::kClassId);

  cls_FakeDatabase db(registrar);
  cow_COW<Material> steel(new Material);
  steel.Get()->name = "Steel";
  cow_COW<Shelf> shelf(new Shelf);
  shelf.Get()->id = 4;
  shelf.Get()->material = steel;
  // A value given in memory: loaded, shared by copies, its identity the
  // object's own business.
  cls_Lazy<Material> const copy = shelf.ConstGet()->material;
  EXPECT_TRUE(copy.IsLoaded());
  EXPECT_EQ(&copy.Get(), &shelf.ConstGet()->material.Get());
  EXPECT_TRUE(copy.Uid().IsNull());
  EXPECT_FALSE(cls_Lazy<Material>(cow_COW<Material>()).HasValue());
  {
    cls_WriteVisitor root(db.WriteRoot());
    ASSERT_TRUE(root.StartWrite(cls_FakeDatabase::kRootClass, cls_Static::ConstUid()));
    root.WriteObj(kShelfField, shelf);
  }
  EXPECT_EQ(db.RowCount(Material::kClassId), 1);
  cls_FakeRow const& row = db.Row(Shelf::kClassId, 0);
  EXPECT_EQ(std::get<cls_FakeRef>(row.at(2)), (cls_FakeRef{Material::kClassId, 0}));
  EXPECT_EQ(row.count(3), 0u);

  db.Reopen();
  cls_ReadVisitor root(db.ReadRoot());
  Shelf const& read = *root.ReadObjCow<Shelf>(kShelfField).ConstGet();
  EXPECT_EQ(read.id, 4);
  EXPECT_TRUE(read.material.IsLoaded());
  EXPECT_EQ(read.material.Get().ConstGet()->name, "Steel");
  EXPECT_FALSE(read.spare.HasValue());
}

}  // namespace
