// The build-time image generator, run on tiny images.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

std::string SourceRoot() {
    const std::string file = __FILE__;
    return file.substr(0, file.rfind("tests/ui/"));
}

class GenImage : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vtx_gen_image_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + m_dir + "'").c_str()); }

    std::string Write(const std::string& name, const std::string& content) {
        const std::string path = m_dir + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    // Runs the generator; the exit status, and the output in out.
    int Run(const std::string& args, std::string& out) {
        const std::string target = m_dir + "/out.cpp";
        const std::string command = "python3 '" + SourceRoot() + "tools/gen_image.py' --template '" + SourceRoot() +
                                    "res/ResourceImplementation.template.cpp' --out '" + target + "' " + args +
                                    " 2>'" + m_dir + "/err.txt'";
        const int status = std::system(command.c_str());
        std::ifstream in(target);
        std::stringstream text;
        text << in.rdbuf();
        out = text.str();
        return status;
    }
    std::string m_dir;
};

template <size_t N>
std::string Bytes(const char (&s)[N]) {
    return std::string(s, N - 1);
}

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST_F(GenImage, FillsEveryTokenOfTheTemplate) {
    // 2 x 1, with a comment in the header.
    const std::string ppm = Write("tiny.ppm", Bytes("P6\n# artwork\n2 1\n255\n\xff\x01\x02\x10\x20\x30"));
    const std::string pgm = Write("tiny.pgm", Bytes("P5 2 1 255\n\x80\x07"));
    std::string out;
    ASSERT_EQ(Run("--name Tiny_Image --kind 3 --id 4242 --size 2x1 --mask 255,0,9 --alpha '" + pgm + "' '" + ppm + "'",
                  out),
              0);
    EXPECT_FALSE(Has(out, "####"));
    EXPECT_TRUE(Has(out, "class CResourceImplementationTiny_Image : public CResourceImplementationBase"));
    EXPECT_TRUE(Has(out, "return 3;"));
    EXPECT_TRUE(Has(out, "return 4242u;"));
    EXPECT_TRUE(Has(out, "GetWidth() const override { return 2; }"));
    EXPECT_TRUE(Has(out, "GetHeight() const override { return 1; }"));
    EXPECT_TRUE(Has(out, "HasMask() const override { return true; }"));
    EXPECT_TRUE(Has(out, "GetMaskRed() const override { return 255; }"));
    EXPECT_TRUE(Has(out, "GetMaskBlue() const override { return 9; }"));
    EXPECT_TRUE(Has(out, "0xff, 0x01, 0x02, 0x10, 0x20, 0x30,"));
    EXPECT_TRUE(Has(out, "0x80, 0x07,"));
    EXPECT_TRUE(Has(out, "#define VTX_IMAGE_HAS_ALPHA"));
}

TEST_F(GenImage, WithoutAlphaOrMaskTheImageSaysSo) {
    const std::string ppm = Write("tiny.ppm", Bytes("P6 1 1 255 \x01\x02\x03"));
    std::string out;
    ASSERT_EQ(Run("--name T --kind 0 --id 7 '" + ppm + "'", out), 0);
    EXPECT_TRUE(Has(out, "#define VTX_IMAGE_HAS_NO_ALPHA"));
    EXPECT_TRUE(Has(out, "HasMask() const override { return false; }"));
    EXPECT_TRUE(Has(out, "GetMaskGreen() const override { return 0; }"));
    EXPECT_TRUE(Has(out, "0x01, 0x02, 0x03,"));
}

TEST_F(GenImage, RejectsArtworkThatDoesNotFit) {
    const std::string ppm = Write("tiny.ppm", Bytes("P6 2 1 255\n\x01\x02\x03\x04\x05\x06"));
    const std::string truncated = Write("short.ppm", Bytes("P6 2 2 255\n\x01\x02\x03"));
    const std::string gray = Write("gray.pgm", Bytes("P5 1 1 255\n\x01"));
    std::string out;
    EXPECT_NE(Run("--name T --kind 3 --id 1 --size 3x1 '" + ppm + "'", out), 0);
    EXPECT_NE(Run("--name T --kind 3 --id 1 '" + truncated + "'", out), 0);
    EXPECT_NE(Run("--name T --kind 3 --id 1 '" + gray + "'", out), 0);
    EXPECT_NE(Run("--name T --kind 3 --id 1 --alpha '" + gray + "' '" + ppm + "'", out), 0);
    EXPECT_NE(Run("--name 9bad --kind 3 --id 1 '" + ppm + "'", out), 0);
    EXPECT_NE(Run("--name T --kind 3 --id 1 --mask 256,0,0 '" + ppm + "'", out), 0);
}

}  // namespace
