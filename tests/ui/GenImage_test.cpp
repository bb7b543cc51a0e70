// The build-time image generator, run on tiny images.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

class GenImage : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/vtx_gen_image_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_dir = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + m_dir + "'").c_str()); }
    template <size_t N>
    std::string Write(const char (&bytes)[N]) {
        const std::string path = m_dir + "/" + std::to_string(m_files++);
        std::ofstream(path, std::ios::binary) << std::string(bytes, N - 1);
        return " '" + path + "'";
    }
    // Exit status of the generator run with args (later options win); the generated source in m_out.
    int Run(const std::string& args) {
        const std::string root = std::string(__FILE__).substr(0, std::string(__FILE__).rfind("tests/ui/"));
        const int status = std::system(("python3 '" + root + "tools/gen_image.py' --template '" + root +
                                        "res/ResourceImplementation.template.cpp' --out '" + m_dir +
                                        "/out.cpp' --name T --kind 3 --id 1 " + args + " 2>/dev/null")
                                           .c_str());
        std::stringstream text;
        text << std::ifstream(m_dir + "/out.cpp").rdbuf();
        m_out = text.str();
        return status;
    }
    std::string m_dir, m_out;
    int m_files = 0;
};

TEST_F(GenImage, FillsEveryTokenOfTheTemplate) {
    // 2 x 1, with a comment in the header.
    ASSERT_EQ(Run("--name Tiny_Image --id 4242 --size 2x1 --mask 255,0,9 --alpha" +
                  Write("P5 2 1 255\n\x80\x07") + Write("P6\n# artwork\n2 1\n255\n\xff\x01\x02\x10\x20\x30")),
              0);
    EXPECT_EQ(m_out.find("####"), std::string::npos);
    for (const char* part :
         {"class CResourceImplementationTiny_Image : public CResourceImplementationBase", "return 3;",
          "return 4242u;", "GetWidth() const override { return 2; }",
          "GetHeight() const override { return 1; }", "HasMask() const override { return true; }",
          "GetMaskRed() const override { return 255; }", "GetMaskBlue() const override { return 9; }",
          "0xff, 0x01, 0x02, 0x10, 0x20, 0x30,", "0x80, 0x07,", "#define VTX_IMAGE_HAS_ALPHA"})
        EXPECT_NE(m_out.find(part), std::string::npos) << part;
}

TEST_F(GenImage, RejectsArtworkThatDoesNotFit) {
    const std::string ppm = Write("P6 2 1 255\n\x01\x02\x03\x04\x05\x06");
    const std::string gray = Write("P5 1 1 255\n\x01");
    for (const std::string& args : {"--size 3x1" + ppm, Write("P6 2 2 255\n\x01\x02\x03"), gray,
                                    "--alpha" + gray + ppm, "--mask 256,0,0" + ppm})
        EXPECT_NE(Run(args), 0) << args;
}

}  // namespace
