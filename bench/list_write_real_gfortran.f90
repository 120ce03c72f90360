! The peer of list_write_real_krm.c: the same REAL(8) values, the same two
! shapes, the same unit, compiled by gfortran.
!
! Usage: list_write_real_gfortran many|each [n]
program list_write_real_gfortran
  implicit none
  real(8), allocatable :: a(:)
  real(8), parameter :: p10(0:12) = [1d-6, 1d-5, 1d-4, 1d-3, 1d-2, 1d-1, 1d0, &
                                     1d1, 1d2, 1d3, 1d4, 1d5, 1d6]
  integer :: n, i, status
  integer(8) :: x
  character(len=32) :: shape, arg

  call get_command_argument(1, shape)
  if (shape /= 'many' .and. shape /= 'each') then
    write (0, '(a)') 'usage: list_write_real_gfortran many|each [n]'
    error stop 2
  end if
  n = 10000000
  call get_command_argument(2, arg, status=status)
  if (status == 0 .and. len_trim(arg) > 0) read (arg, *) n
  if (n < 1) n = 1
  allocate (a(n))

  ! The generator of list_write_real_krm.c.
  x = 1
  do i = 1, n
    x = mod(x * 1103515245_8 + 12345_8, 2147483648_8)
    a(i) = real(x, 8) / 2147483648d0 * p10(mod(i, 13))
  end do

  if (shape == 'many') then
    write (11, *) (a(i), i = 1, n)
  else
    do i = 1, n
      write (11, *) a(i)
    end do
  end if
end program list_write_real_gfortran
