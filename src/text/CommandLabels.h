#pragma once

// Words of the command line: what it says of its own options, and of what went wrong. {0} to {9}
// are gaps, filled by Phrase.

#include "text/Label.h"

namespace velloran::labels {

// Help.
inline constexpr Label kProgramSummary{u"整理扫描的漫画和书籍。",
                                       u"Cleans up scanned comics and books."};
inline constexpr Label kHelpUsage{u"用法:", u"Usage:"};
inline constexpr Label kHelpCommands{u"命令:", u"Commands:"};
inline constexpr Label kHelpOperands{u"操作对象:", u"Operands:"};
inline constexpr Label kHelpOptions{u"选项:", u"Options:"};
inline constexpr Label kHelpParameters{u"参数:", u"Parameters:"};
inline constexpr Label kHelpGeneral{u"通用选项:", u"General options:"};
inline constexpr Label kHelpOptionWord{u"[选项]", u"[OPTIONS]"};
inline constexpr Label kHelpCommandWord{u"命令", u"COMMAND"};
inline constexpr Label kHelpOfCommand{u"“{0} 命令 --help”说明一个命令。",
                                      u"'{0} COMMAND --help' tells of one command."};
inline constexpr Label kTryHelp{u"用法见“{0} --help”。", u"Try '{0} --help'."};
inline constexpr Label kWarning{u"警告:", u"warning:"};
inline constexpr Label kYesNo{u" [y/N] ", u" [y/N] "};
inline constexpr Label kYesWords[] = {{u"是", u"y"}, {u"是的", u"yes"}};
inline constexpr Label kNoSuchForm{
    u"VELLORAN_CPU: 处理器没有这种指令形式，使用最好的。",
    u"VELLORAN_CPU: the processor has no such form, the best is used."};
inline constexpr Label kVersionOfLibraries{u"函数库", u"Libraries"};
inline constexpr Label kVersionOfProcessor{u"处理器指令", u"Processor form"};

// Commands.
inline constexpr Label kCommandEnhance{u"处理一幅图像", u"Enhance one picture"};
inline constexpr Label kCommandBatch{u"处理整个文件夹", u"Enhance a folder tree"};
inline constexpr Label kCommandDescribe{u"用文字说明参数的作用",
                                        u"Tell in words what the parameters would do"};
inline constexpr Label kCommandParams{u"列出全部参数", u"List the parameters"};
inline constexpr Label kCommandInfo{u"显示图像的大小、色深和分辨率",
                                    u"Tell size, depth and resolution of files"};
inline constexpr Label kCommandDetect{u"判断文件类型", u"Tell the type of files"};
inline constexpr Label kCommandMeasure{
    u"测量倾斜、内容框、中缝、四角、弯曲，并给出把握",
    u"Tell what the automatic steps find on pages, and how sure they are"};
inline constexpr Label kDetailsEnhance{
    u"读取INPUT（类型由内容决定），处理后存为OUTPUT（类型由扩展名决定）。",
    u"Loads INPUT, whose content decides its type, enhances it and saves OUTPUT, whose extension "
    u"decides its type."};
inline constexpr Label kDetailsBatch{
    u"处理一个文件夹中的图像，结果存入另一个文件夹，保留子文件夹。结果的文件名为源文件名的小写，"
    u"加上新的扩展名；两个源文件同名时，后一个的名字加~2、~3等，并给出警告。文件按自然顺序处理。",
    u"Enhances the pictures of a folder tree into another one; subfolders are kept. The name of a "
    u"result is its source's in lower case with the new extension. Where two sources would meet, "
    u"the later one gets ~2, ~3 and so on, with a warning. Files are walked in natural order."};
inline constexpr Label kDetailsDescribe{
    u"按处理顺序逐行输出参数的作用，没有作用的步骤不出现。",
    u"A line a step, in the order of the enhancement; a step that would not run has none."};
inline constexpr Label kDetailsParams{
    u"每行一个参数：序号、名称、默认值、范围或列表、含义。列表中的文字前是它的值。",
    u"A line a parameter: index, name, default, range or list, meaning. In a list each text stands "
    u"behind its value."};
inline constexpr Label kDetailsInfo{
    u"每行一个文件：路径、类型号、类型名、宽、高、每像素位数、使用的颜色数、水平和垂直分辨率。",
    u"A line a file: path, type id, type name, width, height, bits per pixel, colors used, "
    u"horizontal and vertical resolution."};
inline constexpr Label kDetailsDetect{u"每行一个文件：类型号和路径。",
                                      u"A line a file: the type id and the path."};

inline constexpr Label kDetailsMeasure{
    u"每个结果一行：路径、项目、把握（0到1）、数值。不修改任何文件。项目：skew（倾斜）、box（内容框"
    u"）、"
    u"split（中缝）、corners（四角）、curves（弯曲，较慢，须用--only指明）、dark（暗部亮度）。",
    u"A line a finding: path, finding, how sure (0 to 1), values. Nothing is changed. The "
    u"findings: "
    u"skew, box (of the content), split (gutter), corners, curves (slow: only by --only), dark "
    u"(level)."};
inline constexpr Label kCommandSettings{u"管理命名设置", u"Keep named settings"};
inline constexpr Label kCommandBook{u"处理扫描书籍的项目", u"Work on a book project"};
inline constexpr Label kDetailsBook{
    u"SOURCE中的书籍项目，每页有自己的参数。VERB为: "
    u"open（读取或新建）、show（每行一页）、set（项目的值和"
    u"各页的参数）、apply（批量应用）、split（拆成两页）、add FILE...、remove、move ROW（列表）、"
    u"convert（转换）、preview ROW "
    u"OUT（一个页签的预览）。每次改动立即整个存盘，之前的项目文件以~结尾保留。",
    u"The book project in SOURCE, in which each page has parameters of its own. VERB is open (read "
    u"or begin it), show (a line a row), set (values of the project and of rows), apply (to other "
    u"rows), split (into two halves), add FILE..., remove, move ROW (the list), convert (the run), "
    u"preview ROW OUT (the picture of a tab). A change is written at once; the project file of "
    u"before stays with ~ behind its name."};
inline constexpr Label kCommandMerge{u"把页面两两拼接", u"Join pages in pairs"};
inline constexpr Label kDetailsMerge{
    u"把一个文件夹中相邻的两页，或两个文件夹中同一位置的两页，拼成一幅；落单的页原样复制。加--"
    u"pair时只把"
    u"LEFT和RIGHT拼成OUT。-m设置[Main]的键，如Layout、Align、Size、Blank、FindContentBox。",
    u"Joins pages that follow one another in a folder, or stand at one place of two folders, into "
    u"one picture; a page left over is copied. With --pair LEFT and RIGHT alone are joined into "
    u"OUT. -m sets a key of [Main], as Layout, Align, Size, Blank, FindContentBox."};
inline constexpr Label kCommandCompare{u"比较两幅图像或两个文件夹",
                                       u"Compare two pictures, or those of two folders"};
inline constexpr Label kDetailsCompare{
    u"逐像素比较两幅同样大小的图像；加--"
    u"folders时比较两个文件夹中同名的图像。平均值和标准差只计算不同"
    u"的像素；相似度是全图8x8窗口质量指数的平均值，越接近1越相似。",
    u"Compares two pictures of one size pixel by pixel; with --folders those of one name in two "
    u"folders. Mean and deviation are those of the pixels that differ; the similarity is the mean "
    u"of the quality index over all windows of 8 by 8 pixels, nearer to 1 the more alike."};
inline constexpr Label kCommandRename{u"按书的次序给文件编号更名",
                                      u"Number the files of a folder in book order"};
inline constexpr Label kDetailsRename{
    u"给FOLDER中的文件取新名，或以新名复制（--move: "
    u"移动）到TARGET。动手前先检查全部新名并写下记录："
    u"中断的更名可以继续完成或撤销，“rename --undo FOLDER”撤销上一次更名。",
    u"Gives the files of FOLDER new names, or copies (--move: moves) them into TARGET under these. "
    u"All names are judged and a record is written before a file moves: a run that was killed can "
    u"be finished or taken back, and 'rename --undo FOLDER' takes the last one back."};
inline constexpr Label kCommandStats{u"统计图像的尺寸和分辨率",
                                     u"Tell how regular the pictures of a folder are"};
inline constexpr Label kCommandSetDpi{u"设置图像的分辨率，不改变像素",
                                      u"Set the resolution of pictures, pixels untouched"};
inline constexpr Label kDetailsSettings{
    u"VERB为list（每行一个名称）、show NAME（用文字说明）、save NAME（存下参数）或delete NAME。",
    u"VERB is list (a name a line), show NAME (in words), save NAME (the parameters given) or "
    u"delete NAME."};
inline constexpr Label kDetailsStats{
    u"只读文件头，不读像素。输出图像的最大、最小宽度、高度、面积和分辨率，以及多数文件相同的值。",
    u"Reads heads alone. Tells the largest and smallest width, height, area and resolution, and "
    u"the values that most files share."};
inline constexpr Label kDetailsSetDpi{
    u"把DPI（0至8000，0为删除）写入BMP、JPEG、PNG和TIFF文件，其余字节不变。任何时候中断，每个文件"
    u"要么已改好，要么还是原样。",
    u"Writes DPI (0 to 8000; 0 removes it) into BMP, JPEG, PNG and TIFF files; all other bytes "
    u"stay. Whatever ends the run, a file is either wholly changed or as it was."};

// Operands.
inline constexpr Label kOperandSettingsVerb{u"list、show、save或delete",
                                            u"list, show, save or delete"};
inline constexpr Label kOperandSettingName{u"设置的名称", u"Name of the setting"};
inline constexpr Label kOperandFolder{u"存放图像的文件夹", u"The folder of the pictures"};
inline constexpr Label kOperandBookVerb{
    u"open、show、set、apply、split、add、remove、move、convert或preview",
    u"open, show, set, apply, split, add, remove, move, convert or preview"};
inline constexpr Label kOperandBookWords{u"add的文件；move和preview的行号，preview的结果",
                                         u"Files of add; the row of move and preview, the result "
                                         u"of preview"};
inline constexpr Label kOperandMergeWords{u"--pair的LEFT RIGHT OUT", u"LEFT RIGHT OUT of --pair"};
inline constexpr Label kOperandCompare1{u"第一幅图像，或文件夹", u"The one picture, or folder"};
inline constexpr Label kOperandCompare2{u"第二幅图像，或文件夹", u"The other one"};
inline constexpr Label kOperandRenameFolder{u"存放文件的文件夹", u"The folder of the files"};
inline constexpr Label kOperandRenameTarget{u"存放结果的文件夹，默认为原文件夹",
                                            u"The folder for the results; default: the same"};
inline constexpr Label kOperandDpi{u"分辨率，0至8000", u"The resolution, 0 to 8000"};
inline constexpr Label kOperandInput{u"源图像，类型由内容决定",
                                     u"The picture; its content decides the type"};
inline constexpr Label kOperandOutput{u"结果，类型由扩展名决定",
                                      u"The result; its extension decides the type"};
inline constexpr Label kOperandSource{u"存放源文件的文件夹", u"The folder of the pages"};
inline constexpr Label kOperandTarget{u"存放结果的文件夹", u"The folder for the results"};
inline constexpr Label kOperandFiles{u"文件", u"Files"};

// Options.
inline constexpr Label kOptionHelp{u"显示说明", u"Print help"};
inline constexpr Label kOptionVersion{u"显示版本；加-v时还有函数库和处理器指令",
                                      u"Print the version; with -v libraries and processor too"};
inline constexpr Label kOptionLang{u"语言: zh（默认）或en", u"Language: zh (default) or en"};
inline constexpr Label kOptionQuiet{u"不显示警告和进度", u"No warnings and no progress"};
inline constexpr Label kOptionVerbose{u"显示每个步骤和失败的详细原因",
                                      u"Tell each step, and failures in detail"};
inline constexpr Label kOptionPrintMan{u"输出手册页", u"Print the manual page"};
inline constexpr Label kOptionPrintCompletion{u"输出命令补全脚本: bash或zsh",
                                              u"Print the completion script: bash or zsh"};
inline constexpr Label kOptionSet{
    u"按名称设置一个参数，如PARA_CONTRAST=120或PARA_COLOR=纯黑白；可多次使用，后面的优先",
    u"Set one parameter by its name, as PARA_CONTRAST=120 or PARA_COLOR=\"Black and white\"; may "
    u"be repeated, the last one wins"};
inline constexpr Label kOptionSetting{u"以设置文件的一节为基础",
                                      u"Start from a section of a settings file"};
inline constexpr Label kOptionStore{u"命名设置所在的文件", u"Where named settings are looked up"};
inline constexpr Label kOptionNamed{u"以一个命名设置为基础",
                                    u"Start from a named setting of the store"};
inline constexpr Label kOptionStop{
    u"处理在何处结束: 0不处理，135分页后，97同样但只画出分页，136页面矫正后，74同样但用快速方式，"
    u"77纠斜后，137或20切边后，14色阶前，91色阶后，134全部（默认）",
    u"Where the enhancement ends: 0 nothing is done, 135 after the split, 97 the same with the "
    u"split drawn instead of cut, 136 after the page correction, 74 the same in fast form, 77 "
    u"after the deskew, 137 or 20 after the content box, 14 before levels, 91 after levels, 134 "
    u"(the default) the whole"};
inline constexpr Label kOptionPreview{u"颜色只看上去减少", u"Only make colors look reduced"};
inline constexpr Label kOptionSaveSetting{
    u"把运行后的参数（包括找到的值）写入设置文件的一节；文件须是新的、空的或设置文件",
    u"Write the parameters as they stand after the run, what it found included; the file must be "
    u"new, empty or a settings file"};
inline constexpr Label kOptionKeepDpi{u"结果保留源文件的分辨率",
                                      u"Give results the resolution of their sources"};
inline constexpr Label kOptionExt{u"结果的类型；auto按每个结果的色深选择",
                                  u"Type of the results; auto chooses by the depth of each"};
inline constexpr Label kOptionFiles{
    u"源文件类型，在列表中的位置: 0全部，1 JPEG，2 GIF，3 UFO，4 BMP，5 PNG，6 TIFF，"
    u"7图元文件，8 JPEG 2000，9 WebP，10相机原始文件",
    u"Which sources, by position in the list of file types: 0 all, 1 JPEG, 2 GIF, 3 UFO, 4 BMP, "
    u"5 PNG, 6 TIFF, 7 metafiles, 8 JPEG 2000, 9 WebP, 10 camera raw"};
inline constexpr Label kOptionNoRecurse{u"不包括子文件夹", u"Leave out subfolders"};
inline constexpr Label kOptionSkipColor{u"彩色页面原样复制，扩展名不变",
                                        u"Copy color pages as they are"};
inline constexpr Label kOptionKeepTime{u"结果保留源文件的日期和时间",
                                       u"Give results the times of their sources"};
inline constexpr Label kOptionSkipExisting{u"结果已有且不比源文件旧时跳过",
                                           u"Leave sources whose result stands and is not older"};
inline constexpr Label kOptionList{
    u"只处理文件中列出的路径，每行一个；-为标准输入。SOURCE之外的文件直接存入TARGET",
    u"Convert only the paths in a file, one a line; - is standard input. A path outside SOURCE "
    u"goes into TARGET itself"};
inline constexpr Label kOptionNull{u"列表中的路径以NUL结尾", u"Paths of the list end in NUL"};
inline constexpr Label kOptionJobs{u"同时处理的文件数，默认为处理器数；结果不因它而变",
                                   u"Files in flight, by default the number of processors; the "
                                   u"results are the same for every number"};
inline constexpr Label kOptionMemory{u"同时处理的页面合计可用的内存，如2G；默认为空闲内存",
                                     u"What pages in flight may take together, as 2G; by default "
                                     u"what is free"};
inline constexpr Label kOptionStrict{u"损坏的源文件算失败", u"A damaged source counts as failed"};
inline constexpr Label kOptionLog{
    u"结果记录，每个失败的文件一行；文件须是新的、空的或旧的记录",
    u"The run log, a line for each file that failed; the file must be new, empty or an old log"};
inline constexpr Label kOptionYes{
    u"允许结果覆盖源文件；不加时在终端上询问，没有终端则为用法错误",
    u"Let results replace their sources; without it that is asked on a terminal, and is a usage "
    u"error elsewhere"};
inline constexpr Label kOptionDryRun{u"只输出每个源文件和结果的路径，不写文件",
                                     u"Print each source and its target, write nothing"};
inline constexpr Label kOptionJsonBatch{u"最后输出一个JSON对象，而不是文字",
                                        u"End with one JSON object instead of the message"};
inline constexpr Label kOptionJson{u"输出JSON", u"As JSON"};
inline constexpr Label kOptionProgress{u"没有终端时也显示进度",
                                       u"Show the progress without a terminal too"};
inline constexpr Label kOptionReview{
    u"写出自动步骤的结果和把握，每行一个，把握小的在前；文件须是新的、空的或旧的清单",
    u"Write what automatic steps found and how sure they are, a line each, least sure first; the "
    u"file must be new, empty or an old list"};
inline constexpr Label kOptionOnly{
    u"只测这些项目，用逗号分隔：skew、box、split、corners、curves、dark",
    u"Only these findings, by comma: skew, box, split, corners, curves, dark"};
inline constexpr Label kOptionCropSummary{u"只输出切边的摘要",
                                          u"Only the short summary of the crop"};
inline constexpr Label kOptionByName{u"只看扩展名", u"Look at the extension alone"};
inline constexpr Label kOptionPage{
    u"按页面文件判断：类型号、种类、结果代码和路径",
    u"What the sniffer of page files says: type id, kind, result code and path"};
inline constexpr Label kOptionPageNumber{u"多页文件中的第几页，默认为1",
                                         u"Which page of a file of several; 1 by default"};
inline constexpr Label kOptionAllPages{
    u"多页文件的每一页各成一个文件，名字后加_0001、_0002等",
    u"A result for each page of a file of several, NAME_0001, NAME_0002 and so on"};
inline constexpr Label kOptionStrip{u"结果不带色彩特性文件、EXIF和XMP",
                                    u"Carry no color profile, EXIF or XMP to the results"};

inline constexpr Label kOptionWithoutPage{
    u"读取命名设置时不取分页和页面矫正（保留旋转），与设置窗口一样",
    u"Take the named setting without split and page correction, the rotation kept, as the "
    u"settings window does"};
inline constexpr Label kOptionTypes{u"文件类型，用逗号分隔；默认为全部",
                                    u"Kinds of files, with commas between; default: all"};
inline constexpr Label kOptionYesAll{
    u"对所有询问回答“是”；不加时在终端上询问，没有终端则为用法错误",
    u"Answer every question with yes; without it they are asked "
    u"on a terminal, and are a usage error elsewhere"};

inline constexpr Label kOptionEachPage{
    u"每一页各自查找分界线、角点和曲线；不加时第一页找到的用于其后各页",
    u"Search split lines, corners and curves on each page anew; without it those of the first page "
    u"stay for the rest"};
inline constexpr Label kOptionBothHalves{
    u"双页（PARA_PAGE_SPLIT_TYPE为2或3）存成两个文件NAME_1和NAME_2，按阅读次序；每页各自查找",
    u"A double page (PARA_PAGE_SPLIT_TYPE 2 or 3) becomes two files, NAME_1 and NAME_2, in reading "
    u"order; each page is searched anew"};
inline constexpr Label kOptionProjectValue{
    u"设置项目的一个值，如m_strPrefix=p；空值清除；可多次使用",
    u"Set a value of the project by its key, as m_strPrefix=p; an empty one clears it; may be "
    u"repeated"};
inline constexpr Label kOptionRows{u"行，如1,3-5,8-或all", u"Rows, as 1,3-5,8- or all"};
inline constexpr Label kOptionReset{u"先恢复默认值", u"Back to the defaults first"};
inline constexpr Label kOptionFrom{u"取哪一行的参数", u"The row whose values are applied"};
inline constexpr Label kOptionWhat{
    u"all所有参数，tab当前页签，before该页签及之前的，after该页签及之后的",
    u"all values, those of the tab, of the tab and those before, or after it"};
inline constexpr Label kOptionTab{u"页签: 1纸张，2页面，3版面，4图像，5输出",
                                  u"The tab: 1 paper, 2 page, 3 layout, 4 image, 5 output"};
inline constexpr Label kOptionTo{u"all所有行，rest之后的行，every-second之后每隔一行",
                                 u"all rows, the rest behind, or every-second behind"};
inline constexpr Label kOptionGeometry{
    u"分页和页面矫正的参数: auto自动（默认），copy复制，keep保留原值",
    u"Split and page correction: auto (default), copy, or keep those of the rows"};
inline constexpr Label kOptionKind{u"2右翻（右半页先读），3左翻（默认）",
                                   u"2 turns to the right (right half first), 3 to the left "
                                   u"(default)"};
inline constexpr Label kOptionBefore{u"插在哪一行之前", u"The row to stand before"};
inline constexpr Label kOptionTarget{u"存放结果的文件夹，也存入项目",
                                     u"The folder for the results, which the project keeps"};
inline constexpr Label kOptionSide{u"left左边的预览，right右边的（默认）",
                                   u"The preview on the left or the right (default)"};
inline constexpr Label kOptionState{u"读取拼接参数文件（.vlm）", u"Start from a .vlm file"};
inline constexpr Label kOptionSource1{u"源文件夹1", u"Source folder 1"};
inline constexpr Label kOptionSource2{u"源文件夹2；两页来自两个文件夹",
                                      u"Source folder 2: pairs come from two folders"};
inline constexpr Label kOptionMergeValue{u"设置拼接参数的一个键，如Layout=1；可多次使用",
                                         u"Set a key of the state, as Layout=1; may be repeated"};
inline constexpr Label kOptionSaveState{u"运行后把参数存入.vlm文件",
                                        u"Write a .vlm file after the run"};
inline constexpr Label kOptionPair{u"只拼接LEFT和RIGHT", u"Join LEFT and RIGHT alone"};
inline constexpr Label kOptionDifference{u"把差异存为图像", u"The differences as a picture"};
inline constexpr Label kOptionAll{u"全图差异列表（CSV）", u"The differences of all pixels, as CSV"};
inline constexpr Label kOptionNonZero{u"非零差异列表（CSV）",
                                      u"Those of the pixels that differ, as CSV"};
inline constexpr Label kOptionLevels{u"差异分布表（CSV）",
                                     u"How often each difference occurs, as CSV"};
inline constexpr Label kOptionFrequency{u"差异图像的统计频数（CSV）",
                                        u"The same, counted on the difference picture"};
inline constexpr Label kOptionFolders{u"比较两个文件夹", u"Compare two folders"};
inline constexpr Label kOptionExport{u"把各行存为CSV文件", u"The rows as a CSV file"};
inline constexpr Label kOptionExitCode{u"不同时退出状态为3", u"Exit status 3 where they differ"};
inline constexpr Label kOptionFileType{
    u"文件类型: 0所有图像（默认），1 JPEG，2 GIF，3 BMP，4 PNG，5 TIFF，6 JPEG 2000，7 WebP，"
    u"8相机原始文件，9所有文件",
    u"Which files: 0 all pictures (default), 1 JPEG, 2 GIF, 3 BMP, 4 PNG, 5 TIFF, 6 JPEG 2000, "
    u"7 WebP, 8 camera raw, 9 all files"};
inline constexpr Label kOptionSort{u"排序: name文件名（默认），created创建时间，modified修改时间",
                                   u"The order: name (default), created or modified (times)"};
inline constexpr Label kOptionDescending{u"降序；按书页分组时不变",
                                         u"The order turned; that by the parts of a book stays"};
inline constexpr Label kOptionSelect{
    u"all全部（默认）、odd奇数编号、even偶数编号、N:M从第N个起每M个取一个",
    u"all (default), odd or even numbers, or N:M, from the N-th file each M-th"};
inline constexpr Label kOptionPrefix{u"新名的前缀", u"In front of each new name"};
inline constexpr Label kOptionSuffix{u"编号后面的文字", u"Behind each number"};
inline constexpr Label kOptionDigits{u"编号的位数，1为不补零；默认5",
                                     u"Digits of the number, 1 is without padding; default 5"};
inline constexpr Label kOptionStart{u"第一个编号，默认1", u"The first number, default 1"};
inline constexpr Label kOptionStep{u"编号的增量，默认1", u"The step of the numbers, default 1"};
inline constexpr Label kOptionNoNumber{u"不编号，保留原名", u"No numbers: keep the name"};
inline constexpr Label kOptionNoExtension{u"不加原扩展名", u"Leave the extension away"};
inline constexpr Label kOptionMove{u"移动到TARGET，删除源文件",
                                   u"Move to TARGET: delete the sources"};
inline constexpr Label kOptionOverwrite{u"允许覆盖列表以外的文件",
                                        u"Let targets replace files outside the list"};
inline constexpr Label kOptionUndo{u"撤销该文件夹的上一次更名",
                                   u"Take the last renaming of the folder back"};

// Wrong usage.
inline constexpr Label kUnknownMergeKey{u"拼接参数没有键“{0}”。",
                                        u"the state of a merge has no key \"{0}\"."};
inline constexpr Label kMergeReplaces{u"结果不能覆盖源文件。",
                                      u"The result cannot replace its source."};
inline constexpr Label kUnknownProjectKey{u"项目没有“{0}”这个值。",
                                          u"a project has no value \"{0}\"."};
inline constexpr Label kNoRowList{u"{0}: “{1}”不是1到{2}的行（如1,3-5,8-或all）。",
                                  u"{0}: \"{1}\" names no rows of 1 to {2} (as 1,3-5,8- or all)."};
inline constexpr Label kNoRow{u"“{0}”不是1到{1}的行号。", u"\"{0}\" is no row of 1 to {1}."};
inline constexpr Label kKeepsHalf{u"第{0}行是拆分出来的页，PARA_PAGE_SPLIT_TYPE不变",
                                  u"row {0} is a half: its PARA_PAGE_SPLIT_TYPE stays"};
inline constexpr Label kUnknownVerb{u"{0}没有操作“{1}”。", u"{0} has no verb \"{1}\"."};
inline constexpr Label kVerbWants{u"{0}后面缺少{1}。", u"{0} wants {1} behind it."};
inline constexpr Label kNotWithVerb{u"{0}不能和{1}一起使用。", u"{0} does not go with {1}."};
inline constexpr Label kNoCommand{u"缺少命令。", u"a command is missing."};
inline constexpr Label kUnknownCommand{u"没有命令“{0}”。", u"there is no command \"{0}\"."};
inline constexpr Label kUnknownOption{u"没有选项“{0}”。", u"there is no option \"{0}\"."};
inline constexpr Label kDidYouMean{u"是不是“{0}”？", u" Did you mean \"{0}\"?"};
inline constexpr Label kMissingOperand{u"缺少{0}。", u"{0} is missing."};
inline constexpr Label kSurplusOperand{u"“{0}”是多余的。", u"\"{0}\" is one word too many."};
inline constexpr Label kMissingValue{u"{0}后面缺少{1}。", u"{0} wants {1} behind it."};
inline constexpr Label kTakesNoValue{u"{0}不带值。", u"{0} takes no value."};
inline constexpr Label kNotWithin{u"{0}: “{1}”不是{2}到{3}的整数。",
                                  u"{0}: \"{1}\" is no number from {2} to {3}."};
inline constexpr Label kNotASize{u"{0}: “{1}”不是大小（如500M、2G）。",
                                 u"{0}: \"{1}\" is no size (as 500M, 2G)."};
inline constexpr Label kNeedsOption{u"{0}要和{1}一起使用。", u"{0} goes with {1} only."};
inline constexpr Label kExcludesOption{u"{0}不能和{1}一起使用。",
                                       u"{0} and {1} exclude each other."};
inline constexpr Label kNoneOfWords{u"{0}: “{1}”不是{2}之一。", u"{0}: \"{1}\" is none of {2}."};
inline constexpr Label kNotFileAndSection{u"{0}: “{1}”不是FILE#SECTION。",
                                          u"{0}: \"{1}\" is not FILE#SECTION."};

// Parameters and settings.
inline constexpr Label kNotNameAndValue{u"“{0}”不是NAME=VALUE。", u"\"{0}\" is not NAME=VALUE."};
inline constexpr Label kUnknownParameter{u"没有参数“{0}”。", u"there is no parameter \"{0}\"."};
inline constexpr Label kNoParameterValue{u"{0}: “{1}”不是32位整数。",
                                         u"{0}: \"{1}\" is no number of 32 bits."};
inline constexpr Label kNoListValue{u"{0}: “{1}”不是32位整数，也不是列表中的文字。",
                                    u"{0}: \"{1}\" is no number of 32 bits and no text of its "
                                    u"list."};
inline constexpr Label kOutsideRange{u"{0}={1}超出范围{2}..{3}",
                                     u"{0}={1} is outside its range {2}..{3}"};
inline constexpr Label kInSetting{u"{0} [{1}]: {2}", u"{0} [{1}]: {2}"};
inline constexpr Label kUnknownKey{u"没有参数“{0}”，不使用。",
                                   u"there is no parameter \"{0}\", left out."};
inline constexpr Label kNotANumber{u"{0}=“{1}”不是数，读作{2}",
                                   u"{0}=\"{1}\" is no number, read as {2}"};
inline constexpr Label kNoSettingsFile{u"{0}: 没有这个设置文件。",
                                       u"{0}: there is no such settings file."};
inline constexpr Label kUnreadableSettings{u"{0}: 设置文件读取失败。",
                                           u"{0}: the settings file could not be read."};
inline constexpr Label kNoSetting{u"{0}: 没有设置“{1}”。", u"{0}: there is no setting \"{1}\"."};
inline constexpr Label kSettingNotNamed{u"{0}: 有{1}个设置，请在#后面写出一个。",
                                        u"{0}: holds {1} settings; name one behind a #."};

// What a failure was due to, in brackets behind its message.
inline constexpr Label kCauseNoSpace{u"空间不足", u"no space"};
inline constexpr Label kCauseNoPermission{u"没有权限", u"no permission"};
inline constexpr Label kCauseDamaged{u"文件损坏", u"damaged"};
inline constexpr Label kCauseNotWritten{u"不能写成这种类型", u"kind not written"};
inline constexpr Label kCauseNotRead{u"不支持的类型", u"kind not read"};
inline constexpr Label kCauseMissing{u"没有这个文件或文件夹", u"no such file or folder"};
inline constexpr Label kCauseFolder{u"是文件夹", u"is a folder"};
inline constexpr Label kCauseNoPlainFile{u"不是普通文件", u"not a plain file"};
inline constexpr Label kCauseTooLarge{u"太大", u"too large"};
inline constexpr Label kCauseNoMemory{u"内存不足", u"no memory"};
inline constexpr Label kCauseInputOutput{u"输入输出错误", u"I/O error"};
inline constexpr Label kCauseLongName{u"名字太长", u"name too long"};
inline constexpr Label kCauseEmpty{u"空文件", u"empty"};
inline constexpr Label kCauseTooManyOpen{u"打开的文件太多", u"too many open files"};
inline constexpr Label kCauseNoSuchPage{u"没有这一页", u"no such page"};
inline constexpr Label kCauseSource{u"源文件: {0}", u"source: {0}"};
inline constexpr Label kCauseJoin{u"，", u"; "};

// Progress and the end.
inline constexpr Label kRateAndRest{u" {0}/秒 剩余{1}", u" {0}/s, {1} left"};
inline constexpr Label kRunLogAt{u"结果记录: {0}", u"run log: {0}"};
inline constexpr Label kStandardOutput{u"标准输出", u"standard output"};

// The manual page.
inline constexpr Label kManName{u"名称", u"NAME"};
inline constexpr Label kManSynopsis{u"概要", u"SYNOPSIS"};
inline constexpr Label kManDescription{u"说明", u"DESCRIPTION"};
inline constexpr Label kManParameters{u"参数", u"PARAMETERS"};
inline constexpr Label kManGeneral{u"通用选项", u"GENERAL OPTIONS"};
inline constexpr Label kManStatus{u"退出状态", u"EXIT STATUS"};
inline constexpr Label kManEnvironment{u"环境变量", u"ENVIRONMENT"};
inline constexpr Label kManFiles{u"文件", u"FILES"};
inline constexpr Label kManExamples{u"例子", u"EXAMPLES"};
inline constexpr Label kManTitle{u"用户命令", u"User Commands"};
inline constexpr Label kManNameLine{u"整理扫描的漫画和书籍", u"clean up scanned comics and books"};
inline constexpr Label kManIntro{
    u"134个编号的参数决定对页面做什么：色调、颜色、清晰度、几何、色深和输出格式。每一页都经过同样"
    u"顺序的步骤，由参数决定哪些步骤起作用。",
    u"One block of 134 numbered parameters says what is done to a page: tone, color, sharpness, "
    u"geometry, color depth and output format. Every page runs through one fixed sequence of "
    u"steps; a step runs when its parameters say so."};
inline constexpr Label kManStreams{
    u"结果写到标准输出，其余写到标准错误。失败的文件写出路径、原因，已知时括号内还有起因。写文件时"
    u"先写在旁边再改名，因此文件要么完整，要么没有。",
    u"Results go to standard output, all else to standard error. A failure says which file and "
    u"what, and in brackets the cause where one is known. A file is written beside its target and "
    u"renamed over it, so that it appears whole or not at all."};
inline constexpr Label kManOrder{
    u"用于enhance、batch和describe，顺序为：默认值，然后--setting或--named，然后从左到右每个--set，"
    u"最后是代表参数的选项。值为十进制、0x开头的十六进制（32位，0xFFFFFFFF为-"
    u"1），或者列表中的文字。"
    u"超出范围的值照用，但给出警告；设置文件中未知的键、不是数的值也给出警告。",
    u"These are common to enhance, batch and describe. They apply in this order: the defaults, "
    u"then --setting or --named, then every --set from left to right, then options that stand for "
    u"a parameter. A value is decimal, 0x hexadecimal (32 bits: 0xFFFFFFFF is -1), or a text of "
    u"its list. A value outside its range is taken, with a warning; an unknown key and a value "
    u"that is no number in a settings file are warned of too."};
inline constexpr Label kStatusDone{u"完成。", u"Done."};
inline constexpr Label kStatusFileFailed{
    u"至少一个文件不能读取或转换，每个都写在标准错误上；再试也没有用。",
    u"At least one file could not be read or converted; each is named on standard error. Another "
    u"try will not help."};
inline constexpr Label kStatusWrongUsage{u"用法错误，没有读写任何文件。",
                                         u"Wrong usage: nothing was read or written."};
inline constexpr Label kStatusNotWritten{
    u"至少一个结果因图像以外的原因不能写出（内存、空间、权限、输入输出错误）；再试可能有用。",
    u"At least one result could not be written for a cause outside the picture (no memory, no "
    u"space, no permission, I/O error); another try may help."};
inline constexpr Label kStatusStopped{
    u"被Ctrl+C、SIGTERM或挂断中止，已写的文件都是完整的。",
    u"Stopped by Ctrl+C, SIGTERM or a hang-up, with everything written so far whole."};
inline constexpr Label kEnvLang{u"为en时使用英文。", u"With en every word is English."};
inline constexpr Label kEnvNoColor{u"不为空时不用颜色。",
                                   u"When it is not empty, no color is shown."};
inline constexpr Label kEnvThreads{u"限制使用的处理器数。",
                                   u"Limits the number of processors used."};
inline constexpr Label kEnvCpu{u"指定处理器指令的形式，用于报告问题。",
                               u"Forces a form of the processor, for bug reports."};
inline constexpr Label kEnvXdg{u"程序自己的文件夹不可写时，设置和记录所在的位置。",
                               u"Where settings and the run log stand when the program's own "
                               u"folder cannot be written."};
inline constexpr Label kFileStore{
    u"命名设置：程序的文件夹可写时在程序旁边，否则在~/.config/VelloranPro/。",
    u"Named settings: beside the program when that folder can be "
    u"written, otherwise in ~/.config/VelloranPro/."};
inline constexpr Label kFileLog{u"结果记录：同样在程序旁边，否则在~/.local/state/VelloranPro/。",
                                u"The run log: beside the program likewise, otherwise in "
                                u"~/.local/state/VelloranPro/."};

}  // namespace velloran::labels
