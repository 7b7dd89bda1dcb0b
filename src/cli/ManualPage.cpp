#include "cli/ManualPage.h"

#include "cli/Commands.h"
#include "cli/Usage.h"
#include "text/CommandLabels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran::cli {

namespace {

/// Characters that roff would take for its own.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if ((c == '.' || c == '\'') && escaped.empty())
            escaped.append("\\&").push_back(c);
        else
            escaped += c;
    }
    return escaped;
}

class Page {
 public:
    void Heading(std::string_view text) { text_.append(".SH ").append(Quoted(text)); }
    void Heading(const Label& label) { Heading(Phrase(label)); }
    void Paragraph(const Label& label) {
        text_.append(".PP\n").append(Escaped(Phrase(label))).append("\n");
    }
    /// A word in bold, and below it what it means.
    void Row(std::string_view word, const Label& meaning) {
        text_.append(".TP\n.B ").append(Quoted(word));
        text_.append(Escaped(Phrase(meaning))).append("\n");
    }
    void Line(std::string_view text) { text_.append(Escaped(text)).append("\n"); }
    void Raw(std::string_view text) { text_ += text; }
    void Options(const Command& command, OptionGroup group) {
        for (const Option option : OptionsOf(command))
            if (RowOf(option).group == group)
                Row(OptionHead(RowOf(option)), RowOf(option).meaning);
    }
    std::string Text() const { return text_; }

 private:
    static std::string Quoted(std::string_view text) { return "\"" + Escaped(text) + "\"\n"; }

    std::string text_;
};

void AddCommands(Page& page) {
    for (const Command& command : Commands()) {
        page.Heading(command.name);
        page.Line(SynopsisOf(command));
        page.Paragraph(command.details);
        for (const Operand& operand : command.operands)
            page.Row(operand.name, operand.meaning);
        page.Options(command, OptionGroup::kOwn);
    }
}

void AddSurroundings(Page& page) {
    page.Heading(labels::kManStatus);
    page.Row("0", labels::kStatusDone);
    page.Row("1", labels::kStatusFileFailed);
    page.Row("2", labels::kStatusWrongUsage);
    page.Row("4", labels::kStatusNotWritten);
    page.Row("129, 130, 143", labels::kStatusStopped);
    page.Heading(labels::kManEnvironment);
    page.Row("VELLORAN_LANG", labels::kEnvLang);
    page.Row("NO_COLOR", labels::kEnvNoColor);
    page.Row("OMP_NUM_THREADS", labels::kEnvThreads);
    page.Row("VELLORAN_CPU", labels::kEnvCpu);
    page.Row("XDG_CONFIG_HOME, XDG_STATE_HOME", labels::kEnvXdg);
    page.Heading(labels::kManFiles);
    page.Row("VelloranPro_Para.ini", labels::kFileStore);
    page.Row("VelloranPro_log.txt", labels::kFileLog);
    page.Heading(labels::kManExamples);
    page.Raw(".nf\n");
    for (const char* example :
         {"velloran enhance 001.jpg 001.png -s PARA_AUTO_LEVELS=1 -v",
          "velloran batch scans/ pages/ --ext jpg -s PARA_CONTRAST=120",
          "velloran batch scans/ pages/ --setting mine.ini#book --json",
          "find scans -newer mark -print0 | velloran batch scans/ pages/ --list - -0"})
        page.Line(example);
    page.Raw(".fi\n");
}

}  // namespace

std::string ManualPage() {
    Page page;
    page.Raw(".\\\" -*- coding: UTF-8 -*-\n.TH VELLORAN 1 \"\" \"VelloranPro\" \"" +
             Phrase(labels::kManTitle) + "\"\n");
    page.Heading(labels::kManName);
    page.Raw("velloran \\- " + Phrase(labels::kManNameLine) + "\n");
    page.Heading(labels::kManSynopsis);
    for (const Command& command : Commands())
        page.Raw(Escaped(SynopsisOf(command)) + "\n.br\n");
    page.Heading(labels::kManDescription);
    page.Paragraph(labels::kManIntro);
    page.Paragraph(labels::kManStreams);
    page.Heading(labels::kManParameters);
    page.Paragraph(labels::kManOrder);
    page.Options(Commands().front(), OptionGroup::kParameters);
    AddCommands(page);
    page.Heading(labels::kManGeneral);
    page.Options(Commands().front(), OptionGroup::kGeneral);
    page.Row(OptionHead(RowOf(Option::kVersion)), RowOf(Option::kVersion).meaning);
    AddSurroundings(page);
    return page.Text();
}

}  // namespace velloran::cli
