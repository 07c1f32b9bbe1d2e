#pragma once

#include <QThread>

#include <memory>
#include <utility>

/// Runs the work in a thread whose stack holds 256 KiB, and waits for it.
template<typename Work>
void runOnSmallStack(Work work)
{
    const std::unique_ptr<QThread> thread(QThread::create(std::move(work)));
    thread->setStackSize(256 * 1024);
    thread->start();
    thread->wait();
}
