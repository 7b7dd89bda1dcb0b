#pragma once

// Words of the documents: what named settings, the folder tools, the comparison and the renamer say
// and ask, in windows as on terminals. {0} to {9} are gaps, filled by Phrase.

#include "text/Label.h"

namespace velloran::labels {

inline constexpr Label kYes{u"是", u"Yes"};
inline constexpr Label kNo{u"否", u"No"};
inline constexpr Label kSourceInvalid{u"源文件夹无效，请重新选择。",
                                      u"The source folder is no folder; please choose again."};
inline constexpr Label kFolderInUse{u"{0}: 另一个程序正在使用这个文件夹。",
                                    u"{0}: another program is at work on this folder."};

// Named settings.
inline constexpr Label kSettingWantsName{u"请输入有效的设置名称。",
                                         u"Please enter a valid name for the setting."};
inline constexpr Label kSettingExistsAsk{
    u"在磁盘中有同名的设置存在，您想覆盖吗？",
    u"A setting of this name is stored already. Do you want to replace it?"};
inline constexpr Label kSettingReadNothing{
    u"抱歉，请先从列表中选择您希望读取的设置。",
    u"Sorry, please choose the setting that you want to read from the list first."};
inline constexpr Label kSettingDeleteNothing{
    u"请先从列表中选择您希望删除的设置。",
    u"Please choose the setting that you want to delete from the list first."};
inline constexpr Label kSettingDeleteAsk{
    u"您真的想从磁盘记录中删除当前设置吗？",
    u"Do you really want to delete this setting from the disk?"};

// Statistics and resolution.
inline constexpr Label kNoTypesChosen{u"请勾选需要设置的文件。",
                                      u"Please choose the kinds of files first."};
inline constexpr Label kSinglePageTiff{u"单页TIFF", u"single-page TIFF"};
inline constexpr Label kDpiLimitBefore{u"抱歉，DPI须在0～",
                                       u"Sorry, the DPI must lie within 0 to "};
inline constexpr Label kDpiLimitBehind{u"之间。", u"."};
inline constexpr Label kStatsNothing{u"在指定的文件夹下没有找到有效的图像文件。",
                                     u"No valid pictures were found in the folder."};
inline constexpr Label kStatsCount{u"文件总数：", u"Files: "};
inline constexpr Label kStatsMaxWidth{u"最大宽度：", u"Largest width: "};
inline constexpr Label kStatsMinWidth{u"最小宽度：", u"Smallest width: "};
inline constexpr Label kStatsMaxHeight{u"最大高度：", u"Largest height: "};
inline constexpr Label kStatsMinHeight{u"最小高度：", u"Smallest height: "};
inline constexpr Label kStatsMaxArea{u"最大面积：", u"Largest area: "};
inline constexpr Label kStatsMinArea{u"最小面积：", u"Smallest area: "};
inline constexpr Label kStatsMaxDpi{u"最大DPI：", u"Largest DPI: "};
inline constexpr Label kStatsMinDpi{u"最小DPI：", u"Smallest DPI: "};
inline constexpr Label kStatsSameWidth{u"个文件宽度为", u" files have the width "};
inline constexpr Label kStatsSameHeight{u"个文件高度为", u" files have the height "};
inline constexpr Label kStatsSameDpi{u"个文件DPI为", u" files have the DPI "};
inline constexpr Label kStatsShare{u"，占文件总数", u", of all files "};
inline constexpr Label kDpiDone{u"处理完毕。", u"Done."};
inline constexpr Label kDpiSeeLogAsk{u"您想查看错误记录吗？", u" Do you want to see the errors?"};

// The comparison.
inline constexpr Label kCompareChooseFirst{u"请先选择源文件。",
                                           u"Please choose the source files first."};
inline constexpr Label kCompareSameFile{u"文件路径重复，没法比较。",
                                        u"Both paths lead to one file; there is nothing to "
                                        u"compare."};
inline constexpr Label kCompareMissing{u"所选源文件已不存在，请重新选择。",
                                       u"A chosen file is gone; please choose again."};
inline constexpr Label kCompareUnreadable{u"源文件读取失败。", u"A source file could not be read."};
inline constexpr Label kCompareSizes{u"两个源文件的像素尺寸（高度、宽度）不一致，没法比较。",
                                     u"The two files differ in width or height; they cannot be "
                                     u"compared."};
inline constexpr Label kCompareChannels{u"两个源文件的通道数不一致，没法比较。",
                                        u"The two files differ in their channels; they cannot be "
                                        u"compared."};
inline constexpr Label kComparePixels{u"总像素数:", u"Pixels:"};
inline constexpr Label kCompareDifferent{u"不同像素:", u"Different pixels:"};
inline constexpr Label kCompareMaximum{u"最大值:", u"Maximum:"};
inline constexpr Label kCompareMean{u"平均值:", u"Mean:"};
inline constexpr Label kCompareDeviation{u"标准差:", u"Standard deviation:"};
inline constexpr Label kCompareSimilarity{u"相似度:", u"Similarity:"};
inline constexpr Label kCompareSame{u"相同", u"identical"};
inline constexpr Label kCompareFileFailed{u"文件创建失败！", u"The file could not be created!"};
inline constexpr Label kCompareFolder1{u"请选择源文件夹1", u"Please choose source folder 1"};
inline constexpr Label kCompareFolder2{u"请选择源文件夹2", u"Please choose source folder 2"};
inline constexpr Label kCompareFolderGone{u"所选文件夹已不存在", u"A chosen folder is gone"};
inline constexpr Label kCompareDone{u"比较完成", u"Comparison done"};
inline constexpr Label kComparePassedOver{u"{0}: 不能比较，略过（{1}）",
                                          u"{0}: cannot be compared, passed over ({1})"};
inline constexpr Label kCompareColumns[] = {
    {u"序号", u"No."},       {u"文件名", u"File"}, {u"不同像素", u"Different pixels"},
    {u"最大值", u"Maximum"}, {u"平均值", u"Mean"}, {u"标准差", u"Standard deviation"},
};
inline constexpr Label kCompareDepths{u"色深不一致", u"the depths differ"};

// The renamer.
inline constexpr Label kRenameNothing{
    u"所选文件夹下没有符合要求的文件，请重新选择。",
    u"There are no such files in the chosen folder; please choose again."};
inline constexpr Label kRenameZero{u"N和M不能为0，请修正。", u"N and M cannot be 0."};
inline constexpr Label kRenameStep{u"增量不能小于1，请更正。",
                                   u"The step cannot be below 1; please correct it."};
inline constexpr Label kRenameEmptyTarget{
    u"目标文件列表不能有空项。请先点“重新编号”或“复制”。",
    u"No target may be empty. Please number the list or copy the names first."};
inline constexpr Label kRenameAsk{u"即将开始重命名，目标文件可能被覆盖，继续否？",
                                  u"The files are going to be renamed, and targets may be "
                                  u"replaced. Go on?"};
inline constexpr Label kRenameTidy{u"清理临时文件……", u"Giving temporary files their names..."};
inline constexpr Label kRenameDone{u"更名完成。", u"Renaming done."};
inline constexpr Label kRenameDoneWithErrors{u"更名完成，但有错误。",
                                             u"Renaming done, with errors."};
inline constexpr Label kRenameSeeLogAsk{u"您想查看错误日志吗？",
                                        u" Do you want to see the errors?"};
inline constexpr Label kRenameOtherFolder{u"亲，不是同一个文件夹下的东东，没法添加。",
                                          u"The file lies in another folder and cannot be added."};
inline constexpr Label kRenameAddedBefore{
    u"个文件已经在列表里了，没有重复添加。",
    u" files were in the list already and were not added again."};
inline constexpr Label kRenameTwoSources{u"{0}和{1}的目标都是{2}。",
                                         u"{0} and {1} have the same target {2}."};
inline constexpr Label kRenameTakenTarget{u"{0}: 目标{1}是列表以外的文件。",
                                          u"{0}: its target {1} is a file outside the list."};
inline constexpr Label kRenameFolderTarget{u"{0}: 目标{1}是文件夹。",
                                           u"{0}: its target {1} is a folder."};
inline constexpr Label kRenameBadName{u"{0}: “{1}”不能用作文件名。",
                                      u"{0}: \"{1}\" cannot be the name of a file."};
inline constexpr Label kRenameUnfinishedAsk{
    u"{0}: 上一次更名没有完成。要怎样处理？",
    u"{0}: the last renaming here was not finished. What is to be done?"};
inline constexpr Label kRenameFinish{u"继续完成", u"Finish it"};
inline constexpr Label kRenameTakeBack{u"撤销它", u"Take it back"};
inline constexpr Label kRenameLeave{u"不处理", u"Leave it"};
inline constexpr Label kRenameUndoAsk{u"即将撤销上一次更名，继续否？",
                                      u"The last renaming is going to be taken back. Go on?"};
inline constexpr Label kRenameNoRun{u"{0}: 没有可以撤销的更名。",
                                    u"{0}: there is no renaming to take back."};
inline constexpr Label kRenameUndone{u"撤销完成。", u"The renaming was taken back."};
inline constexpr Label kRenameUndoneInPart{u"撤销完成，但有些文件不能恢复。",
                                           u"The renaming was taken back, but for some files."};
inline constexpr Label kRenameChanged{u"更名后已改变，不能恢复",
                                      u"has changed since the renaming and was left"};
inline constexpr Label kRenameNameTaken{u"原来的文件名已被占用，不能恢复",
                                        u"its former name is taken, it was left"};
inline constexpr Label kRenameBadJournal{u"{0}: 更名记录不能读取。",
                                         u"{0}: the record of the renaming cannot be read."};
inline constexpr Label kRenameFinished{u"上一次更名已完成。", u"The last renaming was finished."};

}  // namespace velloran::labels
