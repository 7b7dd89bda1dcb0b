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

// The book.
inline constexpr Label kBookSourceEmpty{u"源文件夹为空，无法保存。",
                                        u"There is no source folder; nothing can be saved."};
inline constexpr Label kBookSourceGone{u"源文件夹已失效，请更正。",
                                       u"The source folder is no folder; please correct it."};
inline constexpr Label kBookNotWritten{u"项目文件创建失败。",
                                       u"The project file could not be created."};
inline constexpr Label kBookNoProject{u"文件夹中没有项目文件。",
                                      u"There is no project file in the folder."};
inline constexpr Label kBookUnreadable{u"项目文件读取失败。",
                                       u"The project file could not be read."};
inline constexpr Label kBookRowsLost{
    u"{0}: 这些图像已不在源文件夹，存盘后不再列出: {1}",
    u"{0}: these pictures are not in the source folder, and are no longer listed once saved: {1}"};
inline constexpr Label kBookRowsMissing{u"{0}: 源文件夹中没有这些图像，略过: {1}",
                                        u"{0}: these pictures are not in the source folder, and "
                                        u"were passed over: {1}"};
inline constexpr Label kBookNameRefused{u"{0}: 文件名“{1}”不能使用，略过。",
                                        u"{0}: the name \"{1}\" cannot be used, passed over."};
inline constexpr Label kBookBetweenHalves{u"抱歉，不能在拆分出来的两页之间插入新文件。",
                                          u"Sorry, files cannot be put between two halves."};
inline constexpr Label kBookMoveBetween{u"抱歉，不能移到拆分出来的两页之间。",
                                        u"Sorry, rows cannot be moved between two halves."};
inline constexpr Label kBookOutside{u"抱歉，所选文件必须在源文件夹下。",
                                    u"Sorry, the files must lie in the source folder."};
inline constexpr Label kBookAlreadyThere{u"所选文件已经在列表中了。",
                                         u"A chosen file is in the list already."};
inline constexpr Label kBookIsHalf{u"拆分出来的页不能再拆分。", u"A half cannot be split again."};
inline constexpr Label kBookRemoveHalves{
    u"这是一个拆分页，删除时将连同拆分后的另外一页一起删除。\r\n",
    u"This is a half; the other half goes with it.\r\n"};
inline constexpr Label kBookRemoveAsk{u"您确认您真的想从列表中删除所选项？",
                                      u"Do you really want to remove it from the list?"};
inline constexpr Label kBookResetAsk{u"您确信您真的想把该图像的参数复原？",
                                     u"Do you really want to reset this picture's parameters?"};
inline constexpr Label kBookResetAllAsk{u"您确信您真的想把所有参数复原？",
                                        u"Do you really want to reset all parameters?"};
inline constexpr Label kBookApplied{u"参数应用完成。", u"The parameters were applied."};
inline constexpr Label kBookSaved{u"项目保存完毕。", u"The project was saved."};
inline constexpr Label kBookNothing{u"抱歉，没啥好处理的。", u"Sorry, there is nothing to do."};
inline constexpr Label kBookNoSource{u"请先选择源文件夹", u"Please choose the source folder first"};
inline constexpr Label kBookNoTarget{u"请先选择目标文件夹",
                                     u"Please choose the target folder first"};
inline constexpr Label kBookEmptyAsk{
    u"目标文件夹下的所有文件将被删除，以免发生混乱。您想继续吗？",
    u"All files in the target folder are going to be deleted, to avoid confusion. Go on?"};
inline constexpr Label kBookTargetFailed{u"目标文件夹创建失败。",
                                         u"The target folder could not be created."};
inline constexpr Label kBookTargetIsSource{
    u"目标文件夹不能是源文件夹、它的上级或下级文件夹，也不能存放着列表中的文件。",
    u"The target folder cannot be the source folder, lie above or inside it, or hold a file of "
    u"the list."};
inline constexpr Label kBookTargetForeign{u"目标文件夹“{0}”在这个系统上无法使用。",
                                          u"The target folder \"{0}\" cannot be used on this "
                                          u"system."};
inline constexpr Label kBookBadName{u"“{0}”不能用在文件名中。",
                                    u"\"{0}\" cannot be part of a file's name."};
inline constexpr Label kBookNotDeleted{u"{0}: 不能删除", u"{0}: could not be deleted"};
inline constexpr Label kBookSideFile{u"{0}: 附属文件复制失败",
                                     u"{0}: this file beside the pages could not be copied"};

// The merge.
inline constexpr Label kMergeNoSource{u"请先选择有效的源文件夹。",
                                      u"Please choose a valid source folder first."};
inline constexpr Label kMergeNoTarget{u"请先选择目标文件夹。",
                                      u"Please choose the target folder first."};
inline constexpr Label kMergeTargetFailed{
    u"所选目标文件夹不存在并且无法自动创建。",
    u"The target folder does not exist and could not be created."};
inline constexpr Label kMergeTargetIsSource{u"目标文件夹不能是源文件夹。",
                                            u"The target folder cannot be a source folder."};
inline constexpr Label kMergeDone{u"合并完成。", u"Merging done."};
inline constexpr Label kMergeSuffix{u"_拼接", u"_joined"};
inline constexpr Label kMergeUnreadable{u"{0}: 拼接参数文件读取失败。",
                                        u"{0}: the state of the merge could not be read."};

}  // namespace velloran::labels
