#include "support/fault.h"
#include "support/fixtures.h"
#include "support/requests.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

class ProductsTest : public TarvoTest {
  protected:
    ProductsTest() {
        product.name = "Milk";
        product.text = "4607";
        product.price = 999999;
        product.department = 2;
        product.weighted = 1;
        product.code = 0x0102;
    }

    std::string Write() {
        return FaultOf([&] { kkm.writeDBSale(product); });
    }

    dbsale product;
};

TEST_F(ProductsTest, RecordIsOneExchange) {
    line.Answer(request::kWriteProduct, Frame(0x89, {1, 1, 2}));
    EXPECT_EQ(Write(), "");
    EXPECT_EQ(world.Steps(),
              (Strings{"09 4D 69 6C 6B 20 20 20 20 20 20 20 20 20 20 20 34 36 30 37 00 00 00 00 00 "
                       "00 00 00 00 09 09 09 09 09 09 00 02 01 01 02"}));
}

TEST_F(ProductsTest, PriceOfSevenDigitsIsNotSent) {
    product.price = 1000000;
    EXPECT_EQ(Write(), "5 CTarvo::write_dbsale, pr.size()>6");
    EXPECT_EQ(world.Log(), Strings{});
}

TEST_F(ProductsTest, OtherAnswerToARecordIsCode2) {
    line.Answer(request::kWriteProduct, Frame(0x88, {1, 1, 2}))
        .Answer(request::kWriteProduct, Frame(0x8A, {0}));
    EXPECT_EQ(Write(), "2 CTarvo::write_dbsale, pack.cmd!=kkm_dbsalewrite");
    EXPECT_EQ(Write(), "2 CTarvo::write_dbsale, pack.cmd!=kkm_dbsalewrite");
    EXPECT_EQ(Write(), kSilenceFault);
}

TEST_F(ProductsTest, KeepsZeroTheRefusalOfARecord) {
    line.Answer(request::kWriteProduct, Frame(0x89, {0, 1, 2}))
        .Answer(request::kWriteProduct, Frame(0x89));
    EXPECT_EQ(Write(), "5 CTarvo::write_dbsale, !pack.data[0]");
    EXPECT_EQ(Write(), "5 CTarvo::write_dbsale, !pack.data[0]");
    line.Answer(request::kWriteProduct, Frame(0x89, {0x80, 1, 2}));
    EXPECT_EQ(Write(), "");
}

TEST_F(ProductsTest, KeepsTheTextOfAnEchoThatDiffers) {
    const std::string fault =
        "2 CTarvo::write_dbsale, (pack.data[0]!=data[37])||(pack.data[0]!=data[38])";
    for (const Bytes& answer : {Bytes{1, 0, 2}, {1, 1, 3}, {1, 2, 1}, {1}, {1, 1}}) {
        line.Answer(request::kWriteProduct, Frame(0x89, answer));
        EXPECT_EQ(Write(), fault) << Hex(answer);
    }
}

TEST_F(ProductsTest, MissingEchoOfCodeZeroIsGood) {
    product.code = 0x10000;
    line.Answer(request::kWriteProduct, Frame(0x89, {1}));
    EXPECT_EQ(Write(), "");
}

TEST_F(ProductsTest, ReadRecordIsOneExchange) {
    Bytes answer = FromHex(
        "01 4D 69 6C 6B 20 20 20 20 20 20 20 20 20 20 20 14 16 20 20 20 20 20 20 20 20 20 20 20 00 "
        "00 01 02 03 04 00 02 01 01 02");
    line.Answer(request::kReadProduct, Frame(0x88, answer));
    const dbsale read = kkm.readDbsale(0x0304);
    EXPECT_EQ(world.Steps(), (Strings{"08 03 04"}));
    EXPECT_EQ(read.name, "Milk          ");
    EXPECT_EQ(read.text, "46@@@@@@@@@@");
    EXPECT_EQ(read.price, 1234U);
    EXPECT_EQ(read.department, 2);
    EXPECT_EQ(read.weighted, 1);
    EXPECT_EQ(read.code, 258U);
}

TEST_F(ProductsTest, RecordThatDoesNotExistIsEmpty) {
    line.Answer(request::kReadProduct, Frame(0x88, {0, 0x41}));
    EXPECT_EQ(kkm.readDbsale(0xFFFF).name, "");
    EXPECT_EQ(world.Steps(), (Strings{"08 FF FF"}));
}

TEST_F(ProductsTest, OtherAnswerToAReadIsCode2) {
    line.Answer(request::kReadProduct, Frame(0x89, {1}))
        .Answer(request::kReadProduct, Frame(0x87, {1}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(FaultOf([&] { kkm.readDbsale(0); }),
                  "2 CTarvo::read_dbsale, pack.cmd!=kkm_dbsale");
    }
    EXPECT_EQ(FaultOf([&] { kkm.readDbsale(0); }), kSilenceFault);
}

}  // namespace
}  // namespace test
