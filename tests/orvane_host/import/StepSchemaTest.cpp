#include "orvane_host/import/detail/StepSchema.h"

#include "orvane_host/import/ModelImporter.h"
#include "tests/orvane_host/import/TinyModels.h"

#include <gtest/gtest.h>

#include <string>

using namespace OV::Host;
using namespace OV::Test;

namespace
{

std::string StepFile(const std::string& header, const std::string& data = "")
{
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n" + header
        + "ENDSEC;\nDATA;\n" + data + "ENDSEC;\nEND-ISO-10303-21;\n";
}

/// A building without a body. Newer schemas allow a project to have no history.
std::string TinyIfc(const std::string& schema, const std::string& history)
{
    return StepFile("FILE_SCHEMA(('" + schema + "'));\n",
                    "#1=IFCPROJECT('0xScRe4drECQ4DMSqUjd6d'," + history + R"(,'P',$,$,$,$,(#8),#2);
#2=IFCUNITASSIGNMENT((#3));
#3=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);
#6=IFCCARTESIANPOINT((0.,0.,0.));
#7=IFCAXIS2PLACEMENT3D(#6,$,$);
#8=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#7,$);
#9=IFCLOCALPLACEMENT($,#7);
#10=IFCBUILDING('0xScRe4drECQ4DMSqUjd6e',#20,'B',$,$,#9,$,$,.ELEMENT.,$,$,$);
#11=IFCRELAGGREGATES('0xScRe4drECQ4DMSqUjd6f',#20,$,$,#1,(#10));
#20=IFCOWNERHISTORY(#21,#22,$,.ADDED.,$,$,$,0);
#21=IFCPERSONANDORGANIZATION(#23,#24,$);
#22=IFCAPPLICATION(#24,'1','a','a');
#23=IFCPERSON($,'a',$,$,$,$,$,$);
#24=IFCORGANIZATION($,'a',$,$,$);
)");
}

class StepSchemaTest : public testing::Test
{
protected:
    std::string SchemaOf(const std::string& content)
    {
        WriteFile(m_folder.Path("a.ifc"), content);
        return ReadStepSchema(m_folder.Path("a.ifc"));
    }

    ImportResult Import(const std::string& content)
    {
        WriteFile(m_folder.Path("a.ifc"), content);
        return ModelImporter::Import(m_folder.Path("a.ifc"));
    }

    TemporaryFolder m_folder;
};

bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(StepSchemaTest, IsTheOneThatTheHeaderStates)
{
    EXPECT_EQ(SchemaOf(StepFile("FILE_SCHEMA(('IFC4'));\n")), "IFC4");
    EXPECT_EQ(SchemaOf(StepFile("FILE_SCHEMA (( 'ifc4x3_add2' ));\n")), "IFC4X3_ADD2");
    EXPECT_EQ(SchemaOf("\xEF\xBB\xBF" + StepFile("FILE_SCHEMA(\n  ('IFC2X3'));\n")), "IFC2X3");
}

TEST_F(StepSchemaTest, IsReadOfUtf16)
{
    const std::string filled = "FILE_SCHEMA(('IFC4'));\n" + std::string(200000, ' ');
    for (const bool isBigEndian : {false, true})
    {
        for (const std::string& file : {StepFile("FILE_SCHEMA(('IFC4'));\n"), StepFile(filled)})
        {
            const std::u16string wide(file.begin(), file.end());
            EXPECT_EQ(SchemaOf(MarkedUtf16(wide, isBigEndian)), "IFC4");
        }
    }
    EXPECT_EQ(SchemaOf("\xFF"), "");
    EXPECT_EQ(SchemaOf("\xFF\xFE"), "");
    EXPECT_EQ(SchemaOf("\xFE\xFFI"), "");
}

TEST_F(StepSchemaTest, IsEmptyWhereNoneIsStated)
{
    EXPECT_EQ(SchemaOf(""), "");
    EXPECT_EQ(SchemaOf("v 0 0 0 # ISO-10303-21 FILE_SCHEMA(('IFC4'));\n"), "") << "another format";
    EXPECT_EQ(SchemaOf(StepFile("")), "");
    EXPECT_EQ(SchemaOf(StepFile("FILE_SCHEMA(());\n", "#1=IFCPERSON('a');\n")), "") << "a text behind the entry";
    EXPECT_EQ(SchemaOf("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC"), "");
    EXPECT_EQ(SchemaOf(StepFile("FILE_SCHEMA(('" + std::string(65, 'A') + "'));\n")), "") << "no name";
    EXPECT_EQ(ReadStepSchema(m_folder.Path("missing.ifc")), "");
}

TEST_F(StepSchemaTest, AFileOfAnotherSchemaIsNotCalledBroken)
{
    for (const char* schema : {"IFC4", "IFC4X3_ADD2"})
    {
        const ImportResult result = Import(TinyIfc(schema, "$"));
        EXPECT_EQ(result.status, ImportStatus::Unsupported);
        const std::string line = result.error.Line();
        EXPECT_TRUE(Holds(line, std::string("the schema ") + schema)) << line;
        EXPECT_TRUE(Holds(line, "IFC2X3 is what can be read")) << line;
        EXPECT_FALSE(Holds(line, "complete")) << line;
    }
}

TEST_F(StepSchemaTest, AStepFileThatIsNoIfcIsNamedToo)
{
    const ImportResult result = Import(StepFile("FILE_SCHEMA(('CONFIG_CONTROL_DESIGN'));\n"));
    EXPECT_EQ(result.status, ImportStatus::Unsupported);
    EXPECT_TRUE(Holds(result.error.Line(), "the schema CONFIG_CONTROL_DESIGN")) << result.error.Line();
}

TEST_F(StepSchemaTest, ABrokenFileOfASchemaThatIsReadIsStillCalledBroken)
{
    const ImportResult result = Import(TinyIfc("IFC2X3", "$"));
    EXPECT_EQ(result.status, ImportStatus::Malformed);
    EXPECT_TRUE(Holds(result.error.Line(), "Check that the file is complete")) << result.error.Line();
}

TEST_F(StepSchemaTest, WhatCanBeReadOfAnotherSchemaComesWithAWarning)
{
    const ImportResult newer = Import(TinyIfc("IFC4", "#20"));
    ASSERT_TRUE(newer) << newer.error.Line();
    ASSERT_FALSE(newer.report.warnings.empty());
    EXPECT_TRUE(Holds(newer.report.warnings[0], "the schema IFC4")) << newer.report.warnings[0];
    const ImportResult known = Import(TinyIfc("IFC2X3", "#20"));
    ASSERT_TRUE(known) << known.error.Line();
    for (const std::string& warning : known.report.warnings)
    {
        EXPECT_FALSE(Holds(warning, "schema")) << warning;
    }
}
