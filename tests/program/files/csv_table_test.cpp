#include "files/csv_table.h"

#include <gtest/gtest.h>

#include "base/failure.h"

namespace fisheye_calibration::program {
namespace {

std::string failureOf(const std::string& text) {
  try {
    parseCsv("t.csv", text);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), kExitBadInput);
    return failure.what();
  }
  return "no failure";
}

TEST(CsvTable, ColumnsAreFoundByNameWhateverTheirOrderAndCase) {
  const CsvTable table = parseCsv("t.csv", "b,A\n1,2\n");
  EXPECT_EQ(table.integerAt(table.rows.at(0), table.require("a")), 2);
  EXPECT_EQ(table.integerAt(table.rows.at(0), table.require("b")), 1);
}

TEST(CsvTable, ByteOrderMarkCrlfBlankLinesAndBlanksDoNotCount) {
  const CsvTable table = parseCsv("t.csv", "\xEF\xBB\xBF a , b\r\n\r\n 1 ,\t2 \r\n  \r\n3,4");
  ASSERT_EQ(table.rows.size(), 2u);
  EXPECT_EQ(table.integerAt(table.rows[0], table.require("b")), 2);
  EXPECT_EQ(table.rows[0].line, 3);
  EXPECT_EQ(table.rows[0].fields[1].column, 6);
  EXPECT_EQ(table.integerAt(table.rows[1], table.require("a")), 3);
}

TEST(CsvTable, AMissingHeaderNameIsReported) {
  const CsvTable table = parseCsv("t.csv", "\na,b\n");
  try {
    table.require("c");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(),
                 "t.csv:2:1: the header has no column \"c\", but, separated by commas, \"a, b\"");
  }
}

TEST(CsvTable, ADuplicateHeaderNameIsReported) {
  EXPECT_EQ(failureOf("a,b,A\n"), "t.csv:1:5: column \"A\" is there twice");
}

TEST(CsvTable, ARowOfADifferentLengthIsReported) {
  EXPECT_EQ(failureOf("a,b\n1,2\n3\n"), "t.csv:3:1: 1 value where the header names 2");
  EXPECT_EQ(failureOf("a,b\nx, y, z\n"), "t.csv:2:7: 3 values where the header names 2");
}

TEST(CsvTable, InvalidNumbersAreReportedWithLineAndColumn) {
  const CsvTable table = parseCsv("t.csv", "a,b\n1,  x\n1,\n\"1,5\",nan\n");
  const auto complaint = [&](std::size_t row, std::size_t field) -> std::string {
    try {
      table.floatAt(table.rows.at(row), field);
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "no failure";
  };
  EXPECT_EQ(complaint(0, 1), "t.csv:2:5: not a number: \"x\"");
  EXPECT_EQ(complaint(1, 1), "t.csv:3:3: a number is missing");
  EXPECT_EQ(complaint(2, 1), "t.csv:4:7: not a number: \"nan\"");
  EXPECT_EQ(complaint(2, 0), "t.csv:4:2: not a number: \"1,5\"; decimals follow a point");
}

TEST(CsvTable, SemicolonsTabsAndQuotationMarksAreRead) {
  for (const char* text : {"a;b\n1,5;2\n", "a\tb\n1,5\t2\n", "\"a\";\"b\"\n\"1,5\"; \"2\"\n",
                           "sep=;\na;b\n1,5;2\n", "a,b\n1.5,2\n", "a;b\n1.5;2\n"}) {
    const CsvTable table = parseCsv("t.csv", text);
    EXPECT_EQ(table.floatAt(table.rows.at(0), table.require("a")), 1.5f) << text;
    EXPECT_EQ(table.integerAt(table.rows.at(0), table.require("b")), 2) << text;
  }
}

TEST(CsvTable, AQuotedValueMayHoldSeparatorsAndQuotationMarks) {
  const CsvTable table = parseCsv("t.csv", "a,b\n\"x, \"\"y\"\"\",2\n");
  EXPECT_EQ(table.rows.at(0).fields.at(0).text, "x, \"y\"");
  EXPECT_EQ(failureOf("a,b\n\"1,2\n"), "t.csv:2:1: a quotation mark is not closed");
}

TEST(CsvTable, DecimalCommasThatMayBeSomethingElseAreReported) {
  EXPECT_EQ(failureOf("a,b\n1,5,2,5\n"),
            "t.csv:2:5: 4 values where the header names 2; if decimals follow commas, separate the "
            "values by semicolons");
  const CsvTable table = parseCsv("t.csv", "a;b\n1,234;2.5\n");
  EXPECT_THROW(table.floatAt(table.rows.at(0), 0), Failure);
  const CsvTable grouped = parseCsv("t.csv", "a;b\n1,234;-20,500\n");
  EXPECT_THROW(grouped.floatAt(grouped.rows.at(0), 0), Failure);
  EXPECT_THROW(grouped.floatAt(grouped.rows.at(0), 1), Failure);
}

// One number in which the comma cannot group thousands shows what the others mean.
TEST(CsvTable, DecimalCommasAreRecognisedByTheOthers) {
  for (const char* other : {"2,5", "0,250", "1234,500", "-1,2345", "1,23e2"}) {
    const CsvTable table = parseCsv("t.csv", "a;b\n1,234;" + std::string(other) + "\n");
    EXPECT_EQ(table.floatAt(table.rows.at(0), 0), 1.234f) << other;
  }
}

TEST(CsvTable, ATabNextToACommaIsABlank) {
  const CsvTable table = parseCsv("t.csv", "a,\tb, c\n1.5,\t2,3\n");
  EXPECT_EQ(table.separator, ',');
  EXPECT_EQ(table.integerAt(table.rows.at(0), table.require("b")), 2);
  EXPECT_EQ(parseCsv("t.csv", "a\t,b\t\n1,2\n").separator, ',');
  EXPECT_EQ(parseCsv("t.csv", "\"a\"\t\"b\"\n1\t2\n").separator, '\t');
  EXPECT_EQ(parseCsv("t.csv", "a\tb\tc\n1\t2\t3\n").separator, '\t');
  EXPECT_EQ(parseCsv("t.csv", "a;\tb\n1;\t2\n").separator, ';');
  EXPECT_EQ(parseCsv("t.csv", "sep=\t\r\na\tb\r\n1\t2\r\n").separator, '\t');
}

TEST(CsvTable, NumbersInPlaceOfTheHeaderHaveTheGivenNames) {
  const CsvTable table = parseCsv("t.csv", "1;2,5\n3;4,5\n", {"a", "b"});
  ASSERT_EQ(table.rows.size(), 2u);
  EXPECT_EQ(table.floatAt(table.rows[0], table.require("b")), 2.5f);
  EXPECT_EQ(table.rows[1].line, 2);
  EXPECT_EQ(
      failureOf("1;2;3\n"),
      "t.csv:1:1: no header but 3 numbers, separated by semicolons; write the names of the columns "
      "above them");
}

TEST(CsvTable, ColumnsCountCharactersNotBytes) {
  const CsvTable table = parseCsv("t.csv", "a,b\n\xC3\xA4\xC3\xB6,x\n");
  EXPECT_EQ(table.rows.at(0).fields.at(1).column, 4);
}

TEST(CsvTable, EmptyAndForeignFilesAreReported) {
  EXPECT_EQ(failureOf(""), "t.csv:1:1: the file is empty");
  EXPECT_EQ(failureOf("\r\n \n"), "t.csv:1:1: the file is empty");
  EXPECT_EQ(failureOf(std::string("a\0b", 3)), "t.csv:1:1: not a text file");
  EXPECT_EQ(failureOf(std::string("\xFF\xFE"
                                  "a\0",
                                  4)),
            "t.csv:1:1: UTF-16 text; save the file as UTF-8");
}

}  // namespace
}  // namespace fisheye_calibration::program
